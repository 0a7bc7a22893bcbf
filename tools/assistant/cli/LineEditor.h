// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_LINEEDITOR_H
#define NORIX_ASSISTANT_CLI_LINEEDITOR_H

#include "assistant/cli/Completer.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// Reads lines from a terminal, with editing, history and completion (libedit).
///
/// The library is loaded by the first editor and not with the program: no other command needs it.
class LineEditor {
public:
  /// @param history  the file that keeps the lines; empty for none
  /// @throw std::runtime_error without libedit, or without a terminal
  LineEditor(const Completer &completer, std::string history);
  ~LineEditor();
  LineEditor(const LineEditor &) = delete;
  LineEditor &operator=(const LineEditor &) = delete;

  /// The next line, without its end; nothing at the end of the input. An empty one after Ctrl-C.
  std::optional<std::string> read();

private:
  struct State;
  std::unique_ptr<State> _state;
};

/// The words of a line: blanks part them, quotes and backslashes keep them together as in a shell.
/// A line that ends in a blank has an empty last word when it is to be completed.
struct Words {
  std::vector<std::string> words;
  bool isComplete = true; ///< No quote is open.
};
Words splitWords(const std::string &line, bool forCompletion);

} // namespace norix::assistant::cli

#endif
