// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/CommandLine.h"
#include "assistant/cli/exchange.h"
#include "assistant/cli/launch.h"

#include <exception>
#include <iostream>

namespace cli = norix::assistant::cli;

namespace {

cli::ExitStatus run(int argc, const char *const *argv) {
  const cli::Parsed parsed = cli::parseCommandLine(argc, argv);
  if (!parsed.options) {
    return parsed.status;
  }
  return parsed.options->command == cli::Command::Launch ? cli::launch(*parsed.options)
                                                         : cli::exchange(*parsed.options);
}

} // namespace

int main(int argc, char **argv) {
  try {
    return static_cast<int>(run(argc, argv));
  } catch (const std::exception &error) {
    std::cerr << "norix-assistant: " << error.what() << '\n';
    return static_cast<int>(cli::ExitStatus::Internal);
  }
}
