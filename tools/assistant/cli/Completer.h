// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_COMPLETER_H
#define NORIX_ASSISTANT_CLI_COMPLETER_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// One way to go on with a command line.
struct Candidate {
  /// The whole word. One that ends in '=' or '/' goes on.
  std::string text;
  std::string description;
};

/// What a command line may go on with: commands and options as they are defined, applications that
/// listen or are installed, actions and parameters that they declare.
class Completer {
public:
  explicit Completer(const CLI::App &commandLine) : _commandLine(commandLine) {}

  /// @param words  the words after the program's name; the last one is to be completed
  std::vector<Candidate> complete(const std::vector<std::string> &words) const;

private:
  struct Place;

  Place placeOf(const std::vector<std::string> &words) const;
  std::vector<Candidate> candidatesAt(const Place &place) const;

  const CLI::App &_commandLine;
};

} // namespace norix::assistant::cli

#endif
