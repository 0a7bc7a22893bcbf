// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_PROGRAM_H
#define NORIX_ASSISTANT_CLI_PROGRAM_H

#include "assistant/cli/Console.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// The command line: which commands there are, and which of them was given.
class Program {
public:
  /// Does what a command is for. Throws UsageError for wrong usage that parsing cannot see.
  using Body = std::function<Ending(Console &)>;

  Program();

  /// Adds a command, for commands.h. The examples are the lines of its --help.
  CLI::App &add(const std::string &name, const std::string &description,
                const std::vector<std::string> &examples, Body body);

  /// Parses the arguments, does what they say, and returns the exit status.
  int run(int argc, const char *const *argv);

  const CLI::App &commandLine() const { return _app; }

private:
  Ending execute();
  int reject(const CLI::ParseError &error);

  CLI::App _app;
  Console _console;
  Body _body;
};

} // namespace norix::assistant::cli

#endif
