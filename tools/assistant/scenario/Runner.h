// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_RUNNER_H
#define NORIX_ASSISTANT_SCENARIO_RUNNER_H

#include "assistant/report/Suite.h"
#include "assistant/scenario/Conversation.h"
#include "assistant/scenario/Scenario.h"
#include "assistant/scenario/Stage.h"
#include "assistant/scenario/Variables.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// Plays a scenario. The report has a step more at each end, always: the start of the application,
/// and its findings. After a step that failed the others are skipped.
class Runner {
public:
  /// @param folder  a folder of its own for the application's files, which is there until it ends
  Runner(const Scenario &scenario, const std::string &folder);

  report::Case run();

private:
  using Messages = std::vector<report::Message>;

  void play(const std::string &name, int line, const std::function<Messages(report::Step &)> &body);
  Messages start(report::Step &step);
  Messages perform(const Step &step, report::Step &reported);
  Messages ask(const Ask &ask, report::Step &reported);
  Messages burst(const Burst &burst, report::Step &reported);
  Messages await(const Await &await, report::Step &reported);
  Messages control(const Control &control, report::Step &reported);
  Messages controlApplication(Control::What what);
  Messages controlSender(const Control &control, report::Step &reported);
  void restart();

  std::size_t send(const Call &call);
  Messages settle(std::size_t number, const Expectation &expectation,
                  const std::vector<Capture> &captures, report::Step &reported);
  Messages awaitEnd();
  Messages awaitLog(const Expectation &expectation);
  Messages awaitFindings(const Expectation &expectation);
  bool hasArrived(const char *event, const char *member, const std::string &part) const;

  void judgeFindings();
  Messages unexpectedFindings();
  void distributeEvents();
  std::string stepAt(std::uint64_t time) const;

  const Scenario &_scenario;
  Stage _stage;
  Conversation _conversation;
  Variables _variables;
  std::map<std::string, std::size_t> _sent;
  std::multiset<std::string> _expectedFindings;
  report::Case _case;
  // When each step began: CLOCK_MONOTONIC in nanoseconds.
  std::vector<std::uint64_t> _begins;
  // The first event that has arrived since the step began.
  std::size_t _firstEvent = 0;
  bool _hasFailed = false;
};

/// The case of a scenario that was not played: every step with this outcome or skipped.
report::Case notPlayed(const Scenario &scenario, report::Outcome outcome, const std::string &why);

} // namespace norix::assistant::scenario

#endif
