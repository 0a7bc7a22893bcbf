// SPDX-License-Identifier: Apache-2.0
#include "EcoreUse.h"

#include "../log.h"
#include "JobQueue.h"

#include <Ecore.h>

namespace platform::rpc {

namespace {

int users = 0;
bool held = false;
bool ready = false;

} // namespace

EcoreUse::EcoreUse() {
  if (users++ > 0) {
    return;
  }
  // A desktop need not have a system bus, whose absence Ecore reports in some 170 lines.
  ecore_app_no_system_modules();
  held = held || ecore_init() > 0;
  ready = held && JobQueue::get().open();
  if (!ready) {
    dlog_print(DLOG_ERROR, kLogTag, "the main loop is not to be had: no ports without it");
  }
}

EcoreUse::~EcoreUse() {
  if (--users > 0) {
    return;
  }
  ready = false;
  JobQueue::get().close();
  if (held && ecore_main_loop_nested_get() == 0) {
    held = false;
    ecore_shutdown();
  }
}

bool EcoreUse::isReady() {
  return ready;
}

} // namespace platform::rpc
