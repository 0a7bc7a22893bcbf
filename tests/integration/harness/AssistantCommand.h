// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_ASSISTANTCOMMAND_H
#define NORIX_TESTS_INTEGRATION_ASSISTANTCOMMAND_H

#include "support/Process.h"

#include <string>
#include <vector>

namespace integration {

using support::Outcome;
using support::Process;

/// What norix-assistant ends with.
constexpr int kWrongUsage = 2;
constexpr int kCannotLaunch = 8;
constexpr int kFailed = 14;

// Starts norix-assistant with these arguments.
Process startAssistant(std::vector<std::string> arguments,
                       const Process::Environment &additions = {});

// Lets a program run to its end.
inline Outcome finish(Process process) {
  return process.finish();
}

inline Outcome runAssistant(const std::vector<std::string> &arguments,
                            const Process::Environment &additions = {}) {
  return finish(startAssistant(arguments, additions));
}

} // namespace integration

#endif
