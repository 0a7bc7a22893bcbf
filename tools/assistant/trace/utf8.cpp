// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/utf8.h"

#include <cstdint>
#include <cstring>

namespace norix::assistant::trace {
namespace {

constexpr std::uint64_t kTopBits = 0x8080808080808080U;

std::size_t asciiPrefix(std::string_view text) {
  std::size_t at = 0;
  for (std::uint64_t word = 0; at + sizeof word <= text.size(); at += sizeof word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    if ((word & kTopBits) != 0) {
      break;
    }
  }
  return at;
}

} // namespace

std::size_t characterLength(std::string_view text) {
  const auto byteAt = [text](std::size_t at) -> std::uint32_t {
    return static_cast<unsigned char>(text[at]);
  };
  const std::uint32_t first = byteAt(0);
  if (first < 0x80) {
    return 1;
  }
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < length) {
    return 0;
  }
  std::uint32_t code = first & (0x7fU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((byteAt(at) & 0xc0U) != 0x80U) {
      return 0;
    }
    code = (code << 6U) | (byteAt(at) & 0x3fU);
  }
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return isOverlong || isSurrogate || code > 0x10ffff ? 0 : length;
}

bool isUtf8(std::string_view text) {
  text.remove_prefix(asciiPrefix(text));
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string_view beginningOf(std::string_view text, std::size_t most) {
  if (text.size() <= most) {
    return text;
  }
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xc0U) == 0x80U) {
    --most;
  }
  return text.substr(0, most);
}

} // namespace norix::assistant::trace
