// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/visible.h"

#include <cstdint>
#include <cstdio>

namespace norix::assistant::trace {
namespace {

struct Character {
  std::uint32_t code;
  // How many bytes it takes; 0 when they are not UTF-8.
  std::size_t length;
};

constexpr Character kMalformed = {0, 0};

// The first character of a text that is not empty.
Character decode(std::string_view text) {
  const auto byteAt = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const std::uint32_t first = byteAt(0);
  if (first < 0x80) {
    return {first, 1};
  }
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < length) {
    return kMalformed;
  }
  std::uint32_t code = first & (0x7fU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((byteAt(at) & 0xc0U) != 0x80U) {
      return kMalformed;
    }
    code = (code << 6U) | (byteAt(at) & 0x3fU);
  }
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return isOverlong || isSurrogate || code > 0x10ffff ? kMalformed : Character{code, length};
}

std::string escaped(unsigned char byte) {
  switch (byte) {
  case '\n':
    return "\\n";
  case '\t':
    return "\\t";
  case '\r':
    return "\\r";
  case 0x1b:
    return "\\e";
  default:
    char text[5];
    std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(byte));
    return text;
  }
}

bool isControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0);
}

} // namespace

std::string visible(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const Character next = decode(text);
    const std::size_t length = next.length == 0 ? 1 : next.length;
    if (next.length != 0 && !isControl(next.code)) {
      shown.append(text.substr(0, length));
    } else {
      for (const char byte : text.substr(0, length)) {
        shown += escaped(static_cast<unsigned char>(byte));
      }
    }
    text.remove_prefix(length);
  }
  return shown;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = decode(text).length;
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

} // namespace norix::assistant::trace
