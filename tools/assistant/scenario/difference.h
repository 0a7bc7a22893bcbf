// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_DIFFERENCE_H
#define NORIX_ASSISTANT_SCENARIO_DIFFERENCE_H

#include <string>

namespace norix::assistant::scenario {

/// How two texts differ, line by line: '-' before a line that was expected, '+' before one that
/// came, a blank before one in both. JSON is compared in a form of many lines.
std::string difference(const std::string &expected, const std::string &actual);

} // namespace norix::assistant::scenario

#endif
