// SPDX-License-Identifier: Apache-2.0
#include "visible.h"

#include <algorithm>

namespace platform::dlog {
namespace {

// A range of lead bytes, with the length of the character and the range of its second byte.
struct Lead {
  unsigned char first;
  unsigned char last;
  std::size_t length;
  // These exclude overlong forms, surrogates, code points beyond U+10FFFF, and the control
  // characters U+0080 to U+009F, which some terminals obey.
  unsigned char least;
  unsigned char greatest;
};

constexpr Lead kLeads[] = {
    {0xc2, 0xc2, 2, 0xa0, 0xbf}, {0xc3, 0xdf, 2, 0x80, 0xbf}, {0xe0, 0xe0, 3, 0xa0, 0xbf},
    {0xe1, 0xec, 3, 0x80, 0xbf}, {0xed, 0xed, 3, 0x80, 0x9f}, {0xee, 0xef, 3, 0x80, 0xbf},
    {0xf0, 0xf0, 4, 0x90, 0xbf}, {0xf1, 0xf3, 4, 0x80, 0xbf}, {0xf4, 0xf4, 4, 0x80, 0x8f},
};

bool isWithin(char byte, unsigned char least, unsigned char greatest) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= least && value <= greatest;
}

bool isPrintable(char byte) {
  return isWithin(byte, ' ', '~');
}

bool begins(std::string_view text, const Lead &lead) {
  return isWithin(text[0], lead.first, lead.last) && text.size() >= lead.length
         && isWithin(text[1], lead.least, lead.greatest)
         && std::all_of(text.begin() + 2, text.begin() + static_cast<std::ptrdiff_t>(lead.length),
                        [](char byte) { return isWithin(byte, 0x80, 0xbf); });
}

} // namespace

std::size_t visibleLength(std::string_view text) {
  if (isPrintable(text[0]) || text[0] == '\t') {
    return 1;
  }
  const auto *const lead = std::find_if(std::begin(kLeads), std::end(kLeads),
                                        [text](const Lead &each) { return begins(text, each); });
  return lead != std::end(kLeads) ? lead->length : 0;
}

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), isPrintable);
}

} // namespace platform::dlog
