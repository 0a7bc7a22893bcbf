// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_TEXTS_H
#define NORIX_ASSISTANT_REPORT_TEXTS_H

#include "assistant/report/Suite.h"

#include <string>
#include <vector>

namespace norix::assistant::report {

/// "0.31 s"
std::string secondsText(double seconds);

/// "14 steps: 12 passed, 1 failed, 1 skipped"; outcomes that nothing had are left out.
std::string countsText(const Counts &counts, const std::string &noun);

/// Why the step did not pass: texts, details and the time line, in lines that a terminal only
/// displays.
std::vector<std::string> explanationOf(const Step &step);

/// The lines of a text that a terminal only displays; none for an empty text.
std::vector<std::string> linesOf(const std::string &text);

/// "name (file)"
std::string titleOf(const Case &tried);

} // namespace norix::assistant::report

#endif
