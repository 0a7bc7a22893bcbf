// SPDX-License-Identifier: Apache-2.0
#include "fakes/LogMatchers.h"

#include <ostream>
#include <utility>

namespace fake {

namespace {

MATCHER_P(Resembles, expected, testing::PrintToString(expected)) {
  (void)result_listener;
  return arg.priority == expected.priority && arg.tag == expected.tag
         && arg.prefix == expected.prefix && arg.file == expected.file
         && arg.function == expected.function && arg.line > 0 && arg.format == expected.format
         && arg.text == expected.text;
}

} // namespace

void PrintTo(const LogLine &line, std::ostream *out) {
  *out << line.priority << "/" << line.tag << ": '" << line.prefix << "' " << line.file << " "
       << line.function << "(" << line.line << "): " << line.text << " [" << line.format << "]";
}

LineMatcher IsLine(std::string file, std::string function, std::string format, std::string text) {
  return Resembles(LogLine{6, "NORIX-APPSDK", "%s %s %s(%d): " + format,
                           "v1.0-beta.1.4_tz6.5_211014 : ", std::move(file), std::move(function), 0,
                           std::move(text)});
}

LineMatcher IsLine(std::string file, std::string function, std::string text) {
  return IsLine(std::move(file), std::move(function), text, text);
}

LineMatcher IsStubLine(std::string function, std::string format, std::string text) {
  return Resembles(LogLine{6, "RPC_PORT_STUB", "%s: %s(%d) > " + format, "", "message.cpp",
                           std::move(function), 0, std::move(text)});
}

testing::Matcher<const std::vector<LogLine> &> LinesAre(std::initializer_list<LineMatcher> lines) {
  return testing::ElementsAreArray(lines);
}

} // namespace fake
