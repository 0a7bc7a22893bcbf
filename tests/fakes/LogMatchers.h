// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LOG_MATCHERS_H
#define NORIX_FAKES_LOG_MATCHERS_H

#include "fakes/Log.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <vector>

namespace fake {

void PrintTo(const LogLine &line, std::ostream *out);

using LineMatcher = testing::Matcher<const LogLine &>;

/// A line of the library with everything that it has to have: priority, tag, version, the source
/// file and function that it names, the message's format and its text.
LineMatcher IsLine(std::string file, std::string function, std::string format, std::string text);
/// The same for a message without arguments.
LineMatcher IsLine(std::string file, std::string function, std::string text);
/// A line of the stub runtime.
LineMatcher IsStubLine(std::string function, std::string format, std::string text);

testing::Matcher<const std::vector<LogLine> &> LinesAre(std::initializer_list<LineMatcher> lines);

} // namespace fake

#endif
