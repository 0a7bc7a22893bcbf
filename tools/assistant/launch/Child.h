// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_CHILD_H
#define NORIX_ASSISTANT_LAUNCH_CHILD_H

#include "assistant/launch/Target.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::launch {

/// How an application is started.
struct StartOptions {
  std::vector<std::string> arguments;
  /// Added to this process's environment.
  std::map<std::string, std::string> environment;
  /// Whether its standard output goes where its standard error goes.
  bool mergesOutput = false;
};

/// Starts the program of an application. It gets SIGTERM when this process ends.
/// @return its process id
/// @throw LaunchError when the program cannot be executed
pid_t start(const Target &target, const StartOptions &options);

} // namespace norix::assistant::launch

#endif
