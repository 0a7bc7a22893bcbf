// SPDX-License-Identifier: Apache-2.0
#include "soak/Subject.h"

#include <csignal>
#include <stdexcept>
#include <utility>

namespace soak {
namespace {

// Between two stops a process needs time to send both hellos before their deadline.
constexpr std::chrono::seconds kRest{2};

} // namespace

Subject::Subject(Command command, Environment environment)
    : _command(std::move(command)), _environment(std::move(environment)) {
  start();
}

void Subject::start() {
  _process.emplace(_command, _environment);
  _process->closeInput();
  _resumption.reset();
}

void Subject::killAndRestart() {
  _process->signal(SIGKILL);
  _process->wait();
  start();
}

bool Subject::stopUntil(Clock::time_point end) {
  if (_resumption || Clock::now() < _mayStopFrom) {
    return false;
  }
  _process->signal(SIGSTOP);
  _resumption = end;
  _mayStopFrom = end + kRest;
  return true;
}

void Subject::resumeWhenDue(Clock::time_point now) {
  if (_resumption && now >= *_resumption) {
    resume();
  }
}

void Subject::resume() {
  _process->signal(SIGCONT);
  _resumption.reset();
}

void Subject::requireRunning() const {
  if (!_process->isRunning()) {
    throw std::runtime_error(_command.front() + " has ended by itself; it wrote:\n"
                             + _process->errors());
  }
}

} // namespace soak
