// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/difference.h"

#include "assistant/actions/parseShallow.h"

#include <dtl/dtl.hpp>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

namespace norix::assistant::scenario {
namespace {

using Lines = std::vector<std::string>;

// Comparing takes time and memory with the product of the differences.
constexpr std::size_t kMostLines = 2000;

Lines linesOf(const std::string &text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Members sorted, so that only what differs shows.
std::string pretty(const nlohmann::json &value) {
  return value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string marked(const Lines &lines, char mark) {
  std::string text;
  for (const std::string &line : lines) {
    text += mark + line + "\n";
  }
  return text;
}

std::string compare(const Lines &expected, const Lines &actual) {
  if (expected.size() > kMostLines || actual.size() > kMostLines) {
    return marked(expected, '-') + marked(actual, '+');
  }
  dtl::Diff<std::string> diff(expected, actual);
  diff.compose();
  std::string text;
  for (const auto &[line, info] : diff.getSes().getSequence()) {
    const char mark = info.type == dtl::SES_DELETE ? '-' : info.type == dtl::SES_ADD ? '+' : ' ';
    text += mark + line + "\n";
  }
  return text;
}

} // namespace

std::string difference(const std::string &expected, const std::string &actual) {
  const auto before = actions::parseShallow<nlohmann::json>(expected);
  const auto after = actions::parseShallow<nlohmann::json>(actual);
  if (before.is_structured() && after.is_structured() && before != after) {
    return compare(linesOf(pretty(before)), linesOf(pretty(after)));
  }
  // Texts that differ in nothing but their last line end would look the same.
  return linesOf(expected) == linesOf(actual) ? compare({pretty(expected)}, {pretty(actual)})
                                              : compare(linesOf(expected), linesOf(actual));
}

} // namespace norix::assistant::scenario
