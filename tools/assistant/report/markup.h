// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_MARKUP_H
#define NORIX_ASSISTANT_REPORT_MARKUP_H

#include <string>

namespace norix::assistant::report {

/// A text as it stands in HTML and SVG, in an attribute too. Control characters are spelt out; line
/// ends and tabs stay.
std::string escapeMarkup(const std::string &text);

} // namespace norix::assistant::report

#endif
