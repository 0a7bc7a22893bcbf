// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_BACKGROUND_H
#define NORIX_ASSISTANT_LAUNCH_BACKGROUND_H

#include "assistant/launch/Supervisor.h"

#include <optional>
#include <string>

namespace norix::assistant::launch {

/// An application that was left running.
struct LeftRunning {
  pid_t application = 0;
  /// The process that stays with it, a child of this one. It ends with the application's status, or
  /// 128 and the number of the signal that ended it; SIGTERM ends both.
  pid_t supervisor = 0;
  /// The file with what it writes, and with the findings.
  std::string log;
};

/// Launches an application in a session of its own, and waits until it listens.
/// @throw LaunchError when it ends before, with the end of its log
LeftRunning launchInBackground(const Target &target, const LaunchOptions &options);

/// Ends an application that was launched, in the background or not, and waits for its end.
/// @return whether there was one
bool stopLaunched(const std::string &appId);

} // namespace norix::assistant::launch

#endif
