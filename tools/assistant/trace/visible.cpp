// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/visible.h"

#include "assistant/trace/utf8.h"

#include <algorithm>
#include <cstdio>

namespace norix::assistant::trace {
namespace {

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

// C0 and DEL in one byte, C1 in two.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  const bool isC1 = first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
  return first < 0x20 || first == 0x7f || isC1;
}

} // namespace

std::string visible(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::size_t known = characterLength(text);
    const std::string_view character = text.substr(0, known == 0 ? 1 : known);
    if (known != 0 && !isControl(character)) {
      shown.append(character);
    } else {
      for (const char byte : character) {
        shown += escaped(static_cast<unsigned char>(byte));
      }
    }
    text.remove_prefix(character.size());
  }
  return shown;
}

std::string visibleLines(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    shown += visible(text.substr(0, end));
    if (end < text.size()) {
      shown += text[end];
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return shown;
}

} // namespace norix::assistant::trace
