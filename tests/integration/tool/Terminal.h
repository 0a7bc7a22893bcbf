// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_TOOL_TERMINAL_H
#define NORIX_TESTS_INTEGRATION_TOOL_TERMINAL_H

#include "support/FileDescriptor.h"
#include "support/Process.h"

#include <string>
#include <vector>

namespace integration {

/// A program on a terminal of its own, which the test reads and types on.
class Terminal {
public:
  explicit Terminal(const std::vector<std::string> &command,
                    const support::Process::Environment &additions = {});
  ~Terminal();
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  void type(const std::string &keys) const;
  /// All that was written up to and with this text. Throws when it does not come.
  std::string readUntil(const std::string &text);
  /// All that is written until the program ends.
  std::string readAll();

private:
  bool readMore();

  support::FileDescriptor _terminal;
  pid_t _pid = -1;
  std::string _unread;
};

} // namespace integration

#endif
