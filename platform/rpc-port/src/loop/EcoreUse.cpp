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

/// Called by Ecore in a forked child that goes on with the loop. The child's copies of its parent's
/// descriptors are closed, and their numbers will be used again: the loop must not go on watching
/// them.
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
  ++users;
  (void)glib::findLoaded(); // Before the first watch: GLib's loop is to have a part in each.
  held = held || holdEcore();
  const bool isForked = held && process != getpid();
  leaveParent(); // Ecore asks that of every child that uses it, and nobody else may have.
  if (!ready && !isForked) { // Also after a failure, for lack of descriptors say.
    ready = held && JobQueue::get().open();
  }
  if (!ready) {
    dlog_print(DLOG_ERROR, kLogTag, "Ecore could not be initialised; ports are unavailable");
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
