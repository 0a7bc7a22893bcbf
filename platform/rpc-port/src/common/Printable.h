// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_PRINTABLE_H
#define PLATFORM_RPC_PORT_COMMON_PRINTABLE_H

#include <array>
#include <string_view>

namespace platform::rpc_port {

/// A text for a log message, with `\x1b` in place of a byte that is not printable ASCII. Names and
/// paths come from other processes and from the environment; an escape sequence in one of them must
/// not reach the terminal that shows the log. Allocates nothing, since a lack of memory is logged
/// too; a longer text is cut.
class Printable {
public:
  explicit Printable(std::string_view text);

  const char *text() const { return _text.data(); }

private:
  std::array<char, 1024> _text;
};

} // namespace platform::rpc_port

#endif
