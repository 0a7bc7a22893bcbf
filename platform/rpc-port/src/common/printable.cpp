// SPDX-License-Identifier: Apache-2.0
#include "common/printable.h"

namespace platform::rpc_port {

std::string printable(std::string_view text) {
  constexpr const char *kDigits = "0123456789abcdef";
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte <= '~') {
      result += c;
    } else {
      result += "\\x";
      result += kDigits[byte >> 4];
      result += kDigits[byte & 0xf];
    }
  }
  return result;
}

} // namespace platform::rpc_port
