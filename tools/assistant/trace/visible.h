// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_VISIBLE_H
#define NORIX_ASSISTANT_TRACE_VISIBLE_H

#include <string>
#include <string_view>

namespace norix::assistant::trace {

/// A text of somebody else in a form that a terminal only displays: control characters (C0, C1 and
/// DEL) and bytes that are not UTF-8 become `\n`, `\t`, `\r`, `\e` or `\xHH`. The rest, backslashes
/// included, stays as it is.
std::string visible(std::string_view text);

/// The same for a text of several lines: line ends and tabs stay as they are.
std::string visibleLines(std::string_view text);

} // namespace norix::assistant::trace

#endif
