// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Suite.h"

#include <algorithm>

namespace norix::assistant::report {
namespace {

constexpr std::array<const char *, kOutcomes> kWords = {"skipped", "passed", "tolerated", "failed",
                                                        "error"};

void count(Counts &counts, Outcome outcome) {
  ++counts[static_cast<std::size_t>(outcome)];
}

} // namespace

const char *wordOf(Outcome outcome) {
  return kWords[static_cast<std::size_t>(outcome)];
}

Outcome outcomeFrom(const std::string &word) {
  const auto *const found = std::find(kWords.begin(), kWords.end(), word);
  return found == kWords.end() ? Outcome::Broken : static_cast<Outcome>(found - kWords.begin());
}

Outcome Case::outcome() const {
  Outcome worst = Outcome::Skipped;
  for (const Step &step : steps) {
    worst = std::max(worst, step.outcome);
  }
  return worst;
}

Outcome Suite::outcome() const {
  Outcome worst = Outcome::Skipped;
  for (const Case &tried : cases) {
    worst = std::max(worst, tried.outcome());
  }
  return worst;
}

Counts Suite::countCases() const {
  Counts counts{};
  for (const Case &tried : cases) {
    count(counts, tried.outcome());
  }
  return counts;
}

Counts Suite::countSteps() const {
  Counts counts{};
  for (const Case &tried : cases) {
    for (const Step &step : tried.steps) {
      count(counts, step.outcome);
    }
  }
  return counts;
}

Counts countSteps(const Case &tried) {
  Counts counts{};
  for (const Step &step : tried.steps) {
    count(counts, step.outcome);
  }
  return counts;
}

bool isFailure(Outcome outcome) {
  return outcome >= Outcome::Failed;
}

} // namespace norix::assistant::report
