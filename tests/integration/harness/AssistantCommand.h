// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_ASSISTANTCOMMAND_H
#define NORIX_TESTS_INTEGRATION_ASSISTANTCOMMAND_H

#include "integration/harness/Process.h"

#include <string>
#include <vector>

namespace integration {

// What a program left behind.
struct Outcome {
  int status = 0;
  std::string out;
  std::string err;
};

// Starts norix-assistant with these arguments.
Process startAssistant(std::vector<std::string> arguments,
                       const Process::Environment &additions = {});

// Lets a program run to its end.
Outcome finish(Process process);

inline Outcome runAssistant(const std::vector<std::string> &arguments,
                            const Process::Environment &additions = {}) {
  return finish(startAssistant(arguments, additions));
}

} // namespace integration

#endif
