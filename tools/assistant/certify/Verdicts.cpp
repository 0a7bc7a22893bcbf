// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Verdicts.h"

#include <utility>

namespace norix::assistant::certify {

void Verdicts::pass(const std::string &about) {
  add(report::Outcome::Passed, about, {});
}

void Verdicts::fail(const std::string &seen, const std::string &about,
                    std::vector<trace::Event> events) {
  add(report::Outcome::Failed, about, seen);
  _steps.back().events = std::move(events);
}

void Verdicts::skip(const std::string &why, const std::string &about) {
  add(report::Outcome::Skipped, about, why);
}

void Verdicts::add(report::Outcome outcome, const std::string &about, const std::string &text) {
  const Clock::time_point now = Clock::now();
  report::Step step;
  step.name = _check + (about.empty() ? "" : " " + about);
  step.outcome = outcome;
  step.seconds = std::chrono::duration<double>(now - std::exchange(_begin, now)).count();
  if (!text.empty()) {
    step.messages.push_back({text, {}});
  }
  _steps.push_back(std::move(step));
}

} // namespace norix::assistant::certify
