// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_VISIBLE_H
#define PLATFORM_DLOG_VISIBLE_H

#include <cstddef>
#include <string_view>

namespace platform::dlog {

/// The length in bytes of the first character of a text, if it is a tab or a UTF-8 character other
/// than a control character; otherwise 0. The text must not be empty.
std::size_t visibleLength(std::string_view text);

/// Whether all of a text is printable ASCII, as most are.
bool isPlain(std::string_view text);

} // namespace platform::dlog

#endif
