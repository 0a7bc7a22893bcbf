// SPDX-License-Identifier: Apache-2.0
//
// How the process ends: exit(), _exit(), or a signal that the program caused itself.
#include "probe/endings.h"

#include "probe/Reporter.h"
#include "probe/callbacks.h"
#include "probe/exceptions.h"
#include "probe/real.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <typeinfo>
#include <unistd.h>

namespace norix::probe {
namespace {

struct WatchedSignal {
  int number;
  const char *name;
  struct sigaction before;
};

std::array<WatchedSignal, 5> watchedSignals = {{{SIGSEGV, "SIGSEGV", {}},
                                                {SIGBUS, "SIGBUS", {}},
                                                {SIGILL, "SIGILL", {}},
                                                {SIGFPE, "SIGFPE", {}},
                                                {SIGABRT, "SIGABRT", {}}}};

void reportSignal(const WatchedSignal &watched) {
  Record record(EventKind::Signal);
  record.number(Field::Signal, watched.number).text(Field::Name, watched.name);
  const RunningCallback running = runningCallback();
  if (running.action != nullptr && running.thread == threadId()) {
    record.number(Field::Request, static_cast<std::int64_t>(running.request))
        .text(Field::Action, running.action);
  }
  // Set while std::terminate() runs for an exception that nobody catches.
  const std::type_info *const uncaught = abi::__cxa_current_exception_type();
  if (watched.number == SIGABRT && uncaught != nullptr) {
    record.text(Field::Exception, uncaught->name());
    if (uncaught->name() == lastException().type) {
      record.text(Field::What, lastException().what);
    }
  }
  report(record);
}

// The signal then does what it did before: the instruction is executed again, and a signal that was
// sent is sent again.
void onSignal(int number, siginfo_t *info, void * /*context*/) {
  for (const WatchedSignal &watched : watchedSignals) {
    if (watched.number == number) {
      reportSignal(watched);
      flush();
      sigaction(number, &watched.before, nullptr);
    }
  }
  if (info->si_code <= 0) {
    raise(number);
  }
}

void onExit(int status, void * /*unused*/) {
  Record record(EventKind::Exit);
  report(record.number(Field::Status, status));
}

} // namespace

void watchEndings() {
  static std::atomic<bool> watching{false};
  if (!isReporting() || watching.exchange(true)) {
    return;
  }
  on_exit(onExit, nullptr);
  struct sigaction action = {};
  action.sa_sigaction = onSignal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  for (WatchedSignal &watched : watchedSignals) {
    sigaction(watched.number, &action, &watched.before);
  }
}

} // namespace norix::probe

NORIX_PROBE_EXPORT __attribute__((noreturn)) void _exit(int status) {
  using Exit = void(int);
  static norix::probe::Real<Exit> real("_exit", "libc.so.6");
  norix::probe::flush();
  real(status);
  __builtin_unreachable();
}
