// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_CONSOLE_H
#define NORIX_ASSISTANT_CLI_CONSOLE_H

#include "assistant/cli/Outcome.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

namespace norix::assistant::cli {

using Json = nlohmann::ordered_json;

/// How a command ended, and what is to be shown of it.
struct Ending {
  Outcome outcome = Outcome::Answered;
  Subject subject;
  /// What the command has found out, for standard output; shown as it is but for what a terminal
  /// would execute.
  std::optional<std::string> text = {};
  /// Whether the text has colours in it; then what others sent is visible() already.
  bool hasColours = false;
  /// The same for --json: further members beside the outcome.
  Json facts = Json::object();
  /// The exit status of a program that has taken the command's place; then all has been shown.
  std::optional<int> status = {};
};

/// Wrong usage that only a command itself can see; what() says what is wrong.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The streams of a command: answers on standard output and nothing else there, messages on
/// standard error. Every line is one write; control characters of others are shown, not executed.
class Console {
public:
  enum class Style { Plain, Good, Bad, Faint };

  void setJson(bool isJson) { _isJson = isJson; }
  void setRaw(bool isRaw) { _isRaw = isRaw; }
  bool isJson() const { return _isJson; }

  /// The text in a style, if standard output is a terminal that shows colours.
  std::string styled(Style style, const std::string &text) const;

  /// Writes a line of others' text to standard output. False when it could not be written.
  bool print(const std::string &text) const;
  /// Writes a line with colours in it, whose texts of others are visible() already.
  bool printStyled(const std::string &text) const;
  /// Writes one line of JSON to standard output.
  bool print(const Json &value) const;

  /// Writes a message to standard error, after the name of the program.
  void say(const std::string &message) const;

  /// Replaces the line at the cursor, on a terminal; an empty text takes it away.
  void showProgress(const std::string &text);

  /// Shows how the command ended, and returns its exit status.
  int end(const Ending &ending);

private:
  bool write(const std::string &line) const;
  bool printText(const Ending &ending) const;
  int reportLoss() const;

  bool _isJson = false;
  bool _isRaw = false;
  bool _hasProgress = false;
};

} // namespace norix::assistant::cli

#endif
