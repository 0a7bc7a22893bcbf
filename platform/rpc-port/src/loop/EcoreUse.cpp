// SPDX-License-Identifier: Apache-2.0
#include "loop/EcoreUse.h"

#include "common/log.h"
#include "ecore/init.h"
#include "glib/GLib.h"
#include "loop/FdWatch.h"
#include "loop/JobQueue.h"
#include "loop/Timer.h"

#include <Ecore.h>
#include <sys/types.h>
#include <unistd.h>

namespace platform::rpc_port {

namespace {

int users = 0;
bool held = false;
bool ready = false;
pid_t process = 0;

/**
 * What Ecore calls in a forked child that goes on with the loop: its copies of the parent's
 * descriptors are closed there, and a loop that went on watching them would take whatever gets
 * their numbers for them.
 */
void onForkReset(void * /*data*/) {
  if (process == getpid()) {
    return;
  }
  process = getpid();
  FdWatch::stopAll();
  Timer::stopAll();
  ready = users > 0 && JobQueue::get().reopen();
}

bool holdEcore() {
  if (!ecore::initialize()) {
    return false;
  }
  process = getpid();
  ecore_fork_reset_callback_add(onForkReset, nullptr);
  return true;
}

} // namespace

EcoreUse::EcoreUse() {
  const bool isFirst = users++ == 0;
  (void)glib::findLoaded(); // Before the first watch: GLib's loop is to have a part in each.
  held = held || holdEcore();
  const bool isForked = held && process != getpid();
  leaveParent(); // Ecore asks that of every child that uses it, and nobody else may have.
  if (isFirst && !isForked) {
    ready = held && JobQueue::get().open();
  }
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
    ecore_fork_reset_callback_del(onForkReset, nullptr);
    ecore::shutdown();
  }
}

void EcoreUse::leaveParent() {
  if (held && process != getpid()) {
    ecore_fork_reset();
  }
}

bool EcoreUse::isReady() {
  return ready;
}

} // namespace platform::rpc_port
