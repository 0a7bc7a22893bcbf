// SPDX-License-Identifier: Apache-2.0
#include "common/Printable.h"

#include <cstddef>

namespace platform::rpc_port {

namespace {

constexpr std::size_t kEscapeSize = 4;
constexpr const char *kDigits = "0123456789abcdef";

bool isPlain(unsigned char byte) {
  return byte >= ' ' && byte <= '~';
}

} // namespace

Printable::Printable(std::string_view text) {
  std::size_t size = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (size + kEscapeSize >= _text.size()) {
      break;
    }
    if (isPlain(byte)) {
      _text[size++] = c;
      continue;
    }
    for (const char part : {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]}) {
      _text[size++] = part;
    }
  }
  _text[size] = '\0';
}

} // namespace platform::rpc_port
