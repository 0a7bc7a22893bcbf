// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_ASSISTANT_REPORT_EXAMPLES_H
#define NORIX_TESTS_UNIT_ASSISTANT_REPORT_EXAMPLES_H

#include "assistant/report/Suite.h"

namespace norix::assistant::report {

/// An event so many milliseconds after a fixed moment.
inline trace::Event eventAt(std::uint64_t milliseconds, const std::string &name,
                            nlohmann::json members) {
  constexpr std::uint64_t kBegin = 5000000000;
  trace::Event event{name, kBegin + milliseconds * 1000000, std::move(members)};
  event.members["event"] = name;
  event.members["t"] = event.time;
  return event;
}

/// A request that is answered after 20 ms, of which the callback takes 10, and a finding.
inline std::vector<trace::Event> exchange() {
  return {
      eventAt(0, "assistant", {{"step", "sent"}, {"requestId", "7"}, {"says", "sent request 7"}}),
      eventAt(2, "received", {{"action", "musicNext"}, {"requestId", "7"}}),
      eventAt(4, "callback-entered", {{"action", "musicNext"}}),
      eventAt(14, "callback-left", {{"action", "musicNext"}, {"held", 10000000}}),
      eventAt(16, "call", {{"function", "norix_complete_action_execution"}, {"text", "Next"}}),
      eventAt(18, "finding", {{"finding", "loop-held"}, {"sentence", "held <too> long"}}),
      eventAt(20, "assistant",
              {{"step", "answered"}, {"requestId", "7"}, {"says", "received the answer"}})};
}

inline Step stepWith(Outcome outcome, const std::string &name, const std::string &why = {}) {
  Step step;
  step.name = name;
  step.outcome = outcome;
  step.seconds = 0.25;
  if (!why.empty()) {
    step.messages.push_back({why, ""});
  }
  return step;
}

/// One case of each outcome, with whatever is hard to write.
inline Suite everything() {
  Suite suite;
  suite.name = "all & sundry";
  suite.caseNoun = "scenario";
  suite.stepNoun = "step";
  suite.seconds = 1.5;

  Case failing;
  failing.name = "Volume # 40 <loud>";
  failing.file = "volume.yaml";
  failing.properties = {{"application", "org.example.music"}};
  failing.steps = {stepWith(Outcome::Passed, "start"),
                   stepWith(Outcome::Failed, "run", "other text"),
                   stepWith(Outcome::Tolerated, "known", "accepted"),
                   stepWith(Outcome::Skipped, "rest", "an earlier step failed")};
  failing.steps[1].line = 12;
  failing.steps[1].messages[0].detail = "-expected\n+came \x1b[31m\xff";
  failing.steps[1].output = "]]> & \x01";
  failing.steps[1].events = exchange();
  failing.steps[1].properties = {{"sender", "com.example"}};

  Case broken;
  broken.name = "Does not start";
  broken.steps = {stepWith(Outcome::Broken, "start", "cannot launch"),
                  stepWith(Outcome::Skipped, "run", "an earlier step failed")};

  Case passing;
  passing.name = "Passes";
  passing.steps = {stepWith(Outcome::Passed, "start")};
  suite.cases = {failing, broken, passing};
  return suite;
}

} // namespace norix::assistant::report

#endif
