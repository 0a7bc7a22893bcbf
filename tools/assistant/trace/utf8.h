// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_UTF8_H
#define NORIX_ASSISTANT_TRACE_UTF8_H

#include <cstddef>
#include <string_view>

namespace norix::assistant::trace {

/// How many bytes the first character of a text takes, which must not be empty; 0 when the bytes
/// are not UTF-8: an overlong form, a surrogate, something beyond U+10FFFF, a piece of a character.
std::size_t characterLength(std::string_view text);

/// Whether the whole text is UTF-8. Fast on ASCII.
bool isUtf8(std::string_view text);

/// At most so many bytes of a text, up to the end of a character.
std::string_view beginningOf(std::string_view text, std::size_t most);

} // namespace norix::assistant::trace

#endif
