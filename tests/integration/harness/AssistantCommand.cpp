// SPDX-License-Identifier: Apache-2.0
#include "integration/harness/AssistantCommand.h"

#include <utility>

namespace integration {

Process startAssistant(std::vector<std::string> arguments, const Process::Environment &additions) {
  arguments.insert(arguments.begin(), ASSISTANT_COMMAND);
  return Process(arguments, additions);
}

} // namespace integration
