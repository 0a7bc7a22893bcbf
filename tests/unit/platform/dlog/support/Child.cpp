// SPDX-License-Identifier: Apache-2.0
#include "Child.h"

#include "support/inChild.h"

#include <cstdlib>
#include <regex>

Outcome inChild(const Environment &environment, const std::function<int()> &function) {
  return support::inChild([&] {
    unsetenv("DLOG_FILTER");
    unsetenv("DLOG_FILE");
    for (const auto &[name, value] : environment) {
      setenv(name.c_str(), value.c_str(), 1);
    }
    return function();
  });
}

std::string withoutTimeAndPid(const std::string &line) {
  static const std::regex kHeader(
      R"((^|\n)\d\d-\d\d \d\d:\d\d:\d\d\.\d\d\d ([A-Z]/[^(]*)\( *\d+\))");
  return std::regex_replace(line, kHeader, "$1$2");
}
