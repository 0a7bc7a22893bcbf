// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_VISIBLE_H
#define PLATFORM_DLOG_VISIBLE_H

#include <cstddef>
#include <string_view>

namespace platform::dlog {

/// The number of bytes of the character that a text begins with, if a terminal displays it and does
/// nothing else: a tab, or a character of UTF-8 that is no control character. 0 for any other byte.
/// The text must not be empty.
std::size_t visibleLength(std::string_view text);

/// Whether all of a text is printable ASCII, as most are.
bool isPlain(std::string_view text);

} // namespace platform::dlog

#endif
