// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/texts.h"

#include "assistant/trace/Timeline.h"
#include "assistant/trace/visible.h"

#include <array>
#include <cstdio>
#include <numeric>
#include <sstream>

namespace norix::assistant::report {

std::string secondsText(double seconds) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%.2f s", seconds);
  return text.data();
}

std::string countsText(const Counts &counts, const std::string &noun) {
  const auto all = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
  std::string text = std::to_string(all) + " " + noun + (all == 1 ? "" : "s");
  const char *separator = ": ";
  for (const Outcome outcome :
       {Outcome::Passed, Outcome::Failed, Outcome::Broken, Outcome::Tolerated, Outcome::Skipped}) {
    const std::size_t count = counts[static_cast<std::size_t>(outcome)];
    if (count > 0) {
      text += separator + std::to_string(count) + " " + wordOf(outcome);
      separator = ", ";
    }
  }
  return text;
}

std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream stream(trace::visibleLines(text));
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> explanationOf(const Step &step) {
  std::vector<std::string> lines;
  for (const Message &message : step.messages) {
    for (const std::string &line : linesOf(message.text)) {
      lines.push_back(line);
    }
    for (const std::string &line : linesOf(message.detail)) {
      lines.push_back("  " + line);
    }
  }
  if (!step.events.empty() && step.outcome != Outcome::Skipped) {
    lines.emplace_back("what happened:");
    for (const std::string &line : trace::toLines(step.events)) {
      lines.push_back("  " + line);
    }
  }
  return lines;
}

std::string titleOf(const Case &tried) {
  return trace::visible(tried.file.empty() ? tried.name : tried.name + " (" + tried.file + ")");
}

} // namespace norix::assistant::report
