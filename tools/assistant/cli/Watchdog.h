// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_WATCHDOG_H
#define NORIX_ASSISTANT_CLI_WATCHDOG_H

#include "assistant/cli/Console.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace norix::assistant::cli {

/// How a command ends that Ecore tells of a signal: by ECORE_EVENT_SIGNAL_EXIT or …_HUP.
Outcome outcomeOfSignal(int type, const void *event);

/// Ends the process when its time is up, or at once on SIGINT, SIGTERM and SIGHUP.
///
/// It is a thread of its own, because whatever the main thread waits for may not return in time: a
/// reply, a lock, a loop that is flooded with events. One per process; the signals stay blocked in
/// every other thread from its construction on.
class Watchdog {
public:
  explicit Watchdog(Console &console);
  /// Nothing ends the process any more; the signals are as they were.
  ~Watchdog();
  Watchdog(const Watchdog &) = delete;
  Watchdog &operator=(const Watchdog &) = delete;

  /// From now on the process may take this long.
  void allow(double seconds);
  /// What is waited for now, for the line on a terminal, and how the process ends if it does not
  /// come in time.
  void expect(const std::string &what, const Ending &late);
  /// Called before the process is ended.
  void onEnd(std::function<void()> action);
  /// Blocks the signals again: Ecore unblocks them in the thread that starts it. To be called right
  /// after that; a signal that Ecore got in between is sent again, when its loop runs.
  static void blockSignals();
  /// Claims the end for the caller, who then shows its own ending: the time cannot run out any
  /// more. Does not return when it has run out already.
  void finish();

  /// Since the construction.
  double secondsPassed() const;

private:
  struct State;
  std::unique_ptr<State> _state;
};

} // namespace norix::assistant::cli

#endif
