// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Exchange.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"

#include <memory>

namespace norix::assistant::cli {

void addState(Program &program) {
  auto options = std::make_shared<ExchangeOptions>();
  CLI::App &command = program.add(
      "state", "Asks an application for its state",
      {"norix-assistant state org.example.light", "norix-assistant state org.example.light --json"},
      [options](Console &console) { return exchange(*options, stateRequest(), console); });
  addExchangeOptions(command, *options);
}

} // namespace norix::assistant::cli
