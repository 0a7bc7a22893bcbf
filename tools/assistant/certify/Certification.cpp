// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Certification.h"

#include "assistant/certify/Verdicts.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

namespace norix::assistant::certify {
namespace {

using report::Outcome;
using report::Step;

Step brokenStep(const Check &check, const std::string &why) {
  Step step;
  step.name = check.id;
  step.outcome = Outcome::Broken;
  step.messages.push_back({"the check could not be done: " + why, {}});
  return step;
}

// The names of a check's verdicts, by the name of the verdict.
std::map<std::string, Outcome> outcomesOf(const report::Suite &suite) {
  std::map<std::string, Outcome> outcomes;
  for (const report::Case &chapter : suite.cases) {
    for (const Step &step : chapter.steps) {
      outcomes.emplace(step.name, step.outcome);
    }
  }
  return outcomes;
}

} // namespace

Certification::Certification(Examination &examination, Rules rules,
                             std::function<void(const Progress &)> inform)
    : _examination(examination), _rules(std::move(rules)), _inform(std::move(inform)) {}

report::Suite Certification::run(const Writers &writers) {
  const auto begin = std::chrono::steady_clock::now();
  report::Suite suite;
  suite.name = "certification of " + _examination.order().application;
  suite.caseNoun = "chapter";
  suite.stepNoun = "verdict";
  performAll(suite, writers);
  _examination.endApplication();
  report::Case baseline = judgeBaseline(suite);
  if (!baseline.steps.empty()) {
    suite.cases.push_back(std::move(baseline));
    close(suite.cases.back(), writers);
  }
  suite.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  for (const auto &writer : writers) {
    writer->end(suite);
  }
  return suite;
}

void Certification::performAll(report::Suite &suite, const Writers &writers) {
  const std::vector<const Check *> checks = selected();
  for (std::size_t i = 0; i < checks.size(); ++i) {
    const Check &check = *checks[i];
    if (suite.cases.empty() || suite.cases.back().name != check.chapter) {
      suite.cases.emplace_back();
      suite.cases.back().name = check.chapter;
    }
    report::Case &chapter = suite.cases.back();
    _inform({i + 1, checks.size(), check.id});
    std::vector<Step> steps = perform(check);
    std::move(steps.begin(), steps.end(), std::back_inserter(chapter.steps));
    const bool isLast = i + 1 == checks.size() || chapter.name != checks[i + 1]->chapter;
    if (isLast) {
      close(chapter, writers);
    }
  }
}

void Certification::close(report::Case &chapter, const Writers &writers) {
  _examination.waitIfAbandoned();
  _inform({});
  for (const Step &step : chapter.steps) {
    chapter.seconds += step.seconds;
  }
  for (const auto &writer : writers) {
    writer->add(chapter);
  }
}

std::vector<const Check *> Certification::selected() const {
  std::vector<const Check *> checks;
  for (const Check &check : catalogue()) {
    const bool isWanted =
        std::find(_rules.checks.begin(), _rules.checks.end(), check.id) != _rules.checks.end();
    if (_rules.checks.empty() || isWanted) {
      checks.push_back(&check);
    }
  }
  return checks;
}

std::vector<Step> Certification::perform(const Check &check) {
  Verdicts verdicts(check.id);
  std::vector<Step> broken;
  try {
    check.run(_examination, verdicts);
  } catch (const NotPossible &reason) {
    verdicts.skip(reason.what());
  } catch (const Error &error) {
    verdicts.fail(std::string("the exchange ended: ") + error.what());
  } catch (const std::exception &error) {
    broken.push_back(brokenStep(check, error.what()));
  }
  std::vector<Step> steps = verdicts.take();
  std::move(broken.begin(), broken.end(), std::back_inserter(steps));
  for (Step &step : steps) {
    judge(check, step);
  }
  return steps;
}

// A failure says what to do and why; one that does not count says so.
void Certification::judge(const Check &check, Step &step) const {
  step.properties = {{"level", wordOf(check.level)}, {"title", check.title}};
  if (step.outcome != Outcome::Failed) {
    return;
  }
  step.messages.back().detail = std::string(check.mend) + "\n" + check.why;
  const bool counts =
      check.level == Level::Must || (check.level == Level::Should && _rules.isStrict);
  if (const Baseline::Entry *const entry = _rules.baseline.find(step.name)) {
    step.outcome = Outcome::Tolerated;
    step.messages.push_back(
        {"accepted by " + _rules.baseline.path() + ":" + std::to_string(entry->line), {}});
  } else if (!counts) {
    step.outcome = Outcome::Tolerated;
    step.messages.push_back(
        {std::string("of level '") + wordOf(check.level)
             + (check.level == Level::Should ? "': it counts with --strict" : "': it never counts"),
         {}});
  }
}

// Failures that were accepted and are none any more would hide the next ones.
report::Case Certification::judgeBaseline(const report::Suite &suite) const {
  report::Case stale;
  stale.name = "baseline";
  stale.file = _rules.baseline.path();
  const auto outcomes = outcomesOf(suite);
  const std::vector<const Check *> checks = selected();
  for (const Baseline::Entry &entry : _rules.baseline.entries()) {
    const bool isDone = std::any_of(checks.begin(), checks.end(), [&entry](const Check *check) {
      return check->id == checkOf(entry.name);
    });
    const auto found = outcomes.find(entry.name);
    const bool hasFailed = found != outcomes.end() && found->second != Outcome::Passed;
    if (!isDone || hasFailed) {
      continue;
    }
    Step step;
    step.name = entry.name;
    step.line = entry.line;
    step.outcome = Outcome::Failed;
    step.messages.push_back({"'" + entry.name + "' is accepted, and does not fail",
                             "Take the line out of the baseline."});
    stale.steps.push_back(std::move(step));
  }
  return stale;
}

} // namespace norix::assistant::certify
