// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_OPTIONS_H
#define NORIX_ASSISTANT_CLI_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

enum class Command { State, Run, Launch };

// What the command line says, checked.
struct Options {
  Command command = Command::State;

  // state, run
  std::string appId;
  std::string senderId = "com.valtren.tizen.norix";
  // A little more than the library's own 30 seconds, so that its answer comes first.
  double deadline = 32.0;

  // run
  std::string actionId;
  std::string actionType;
  std::string actionParams;

  // launch
  std::string target;
  std::vector<std::string> arguments;
  bool isStrict = false;
  bool waitsForListening = false;
  bool stops = false;
  std::optional<double> completionTimeout;

  // launch, run, state, monitor
  bool traces = false;
  bool isJson = false;
};

} // namespace norix::assistant::cli

#endif
