// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_SUITE_H
#define NORIX_ASSISTANT_REPORT_SUITE_H

#include "assistant/trace/Event.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace norix::assistant::report {

/// What came of a step. The later of two is the worse one.
enum class Outcome {
  Skipped,   ///< It was not tried.
  Passed,    ///< What was expected came.
  Tolerated, ///< It failed, and that does not count: its messages say why not.
  Failed,    ///< Something else came.
  Broken     ///< It could not be tried: the application does not start, for one.
};

constexpr std::size_t kOutcomes = 5;

/// The outcome in one word, for scripts and people: "skipped", "passed", "tolerated", "failed",
/// "error".
const char *wordOf(Outcome outcome);

/// The outcome with this word; Broken for any other.
Outcome outcomeFrom(const std::string &word);

/// Something to say about a step that did not pass. Texts may hold anything that applications sent:
/// the writers make them visible.
struct Message {
  /// One sentence.
  std::string text;
  /// More, in lines: a difference, for one. Empty for nothing.
  std::string detail;
};

/// Names with values, in an order.
using Properties = std::vector<std::pair<std::string, std::string>>;

/// The smallest thing with an outcome of its own: a step of a scenario, a check.
struct Step {
  std::string name;
  Outcome outcome = Outcome::Skipped;
  double seconds = 0.0;
  /// Where the step stands in the file of its case; 0 when it stands nowhere.
  int line = 0;
  std::vector<Message> messages;
  /// What happened on both sides meanwhile, by time.
  std::vector<trace::Event> events;
  /// What the application answered.
  std::string output;
  Properties properties;
};

/// Steps that follow each other: a scenario, a chapter of checks.
struct Case {
  std::string name;
  /// The file that says what the case consists of; empty when there is none.
  std::string file;
  double seconds = 0.0;
  std::vector<Step> steps;
  Properties properties;

  /// The worst of its steps.
  Outcome outcome() const;
};

/// How many of something had which outcome.
using Counts = std::array<std::size_t, kOutcomes>;

/// Everything that one call of the program tried.
struct Suite {
  std::string name;
  /// What a case and a step are called, one of them: "scenario", "step".
  std::string caseNoun = "case";
  std::string stepNoun = "step";
  double seconds = 0.0;
  std::vector<Case> cases;
  Properties properties;

  /// The worst of its cases.
  Outcome outcome() const;
  Counts countCases() const;
  Counts countSteps() const;
};

Counts countSteps(const Case &tried);

/// Whether an outcome makes everything fail: Failed and Broken do.
bool isFailure(Outcome outcome);

} // namespace norix::assistant::report

#endif
