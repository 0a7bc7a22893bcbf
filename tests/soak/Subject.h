// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_SUBJECT_H
#define NORIX_TESTS_SOAK_SUBJECT_H

#include "support/Process.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace soak {

using Clock = std::chrono::steady_clock;

// A process that the soak kills, stops and continues.
class Subject {
public:
  using Command = std::vector<std::string>;
  using Environment = support::Process::Environment;

  // Starts it.
  Subject(Command command, Environment environment);

  // Sends SIGKILL, and starts a new process.
  void killAndRestart();
  // SIGSTOP now, SIGCONT when it is due. Not while it is stopped, nor soon after.
  bool stopUntil(Clock::time_point end);
  void resumeWhenDue(Clock::time_point now);
  void resume();
  // Throws with its standard error when it has ended by itself.
  void requireRunning() const;

  support::Process &process() { return *_process; }

private:
  void start();

  Command _command;
  Environment _environment;
  std::optional<support::Process> _process;
  std::optional<Clock::time_point> _resumption;
  Clock::time_point _mayStopFrom;
};

} // namespace soak

#endif
