// SPDX-License-Identifier: Apache-2.0
#include "FaultSweep.h"

#include "NorixImpl/NorixImpl.h"

#include <norix.h>

#include <map>
#include <ostream>
#include <set>
#include <tuple>
#include <utility>

using fake::platform;

namespace {

constexpr double kLong = 3600;
constexpr int kFault = -5;

using NumberedCall = std::pair<std::string, int>;

std::vector<NumberedCall> numbered(const std::vector<fake::Call> &calls) {
  std::map<std::string, int> counts;
  std::vector<NumberedCall> found;
  for (const fake::Call &call : calls) {
    found.emplace_back(call.function, ++counts[call.function]);
  }
  return found;
}

Outcome outcomeOf(const Road &road, fake::App &app, fake::Assistant &assistant) {
  Outcome outcome;
  try {
    outcome.result = road.run(app, assistant);
  } catch (...) {
    // Which exception it is, the tests of the single calls say.
    outcome.result.reset();
  }
  outcome.lastLog = platform().log.lines().empty() ? "" : platform().log.last().text;
  outcome.handed = app.stateRequests.size() + app.actionRequests.size();
  outcome.results = assistant.results().size();
  outcome.responses = assistant.callbacks().size();
  return outcome;
}

// Ends every wait and the library, without faults.
void finish() {
  platform().faults = {};
  try {
    platform().clock.advance(kLong);
  } catch (...) {
    // A tick without an action id throws each time.
  }
  if (norix::NorixImpl::_instance != nullptr) {
    (void)norix_deinitialize();
  }
}

struct Run {
  Outcome outcome;
  std::vector<NumberedCall> calls;
};

Run runOnce(const Road &road, const NumberedCall *fault,
            const std::vector<fake::DeliberateLeak> &leaks) {
  fake::startAnew();
  fake::App app;
  fake::Assistant assistant;
  road.prepare(app, assistant);
  platform().journal.clear();
  platform().log.clear();
  if (fault != nullptr) {
    platform().faults.fail(fault->first, fault->second, kFault);
  }

  Run run;
  run.outcome = outcomeOf(road, app, assistant);
  run.calls = numbered(platform().journal.calls());

  finish();
  for (const fake::DeliberateLeak leak : leaks) {
    platform().leaks.expectLeft(leak, 1);
  }
  fake::reportWhatIsLeft();
  return run;
}

const Effect *effectOf(const NumberedCall &call, const std::vector<Effect> &effects) {
  for (const Effect &effect : effects) {
    if (NumberedCall(effect.function, effect.nth) == call) {
      return &effect;
    }
  }
  return nullptr;
}

} // namespace

bool operator==(const Outcome &one, const Outcome &other) {
  return std::tie(one.result, one.lastLog, one.handed, one.results, one.responses)
         == std::tie(other.result, other.lastLog, other.handed, other.results, other.responses);
}

void PrintTo(const Outcome &outcome, std::ostream *out) {
  *out << (outcome.result ? std::to_string(*outcome.result) : "an exception") << ", '"
       << outcome.lastLog << "', " << outcome.handed << " handed, " << outcome.results
       << " results, " << outcome.responses << " responses";
}

void sweep(const Road &road, const std::vector<Effect> &effects) {
  const Run clean = runOnce(road, nullptr, road.leaks);
  std::set<NumberedCall> met;

  for (const NumberedCall &call : clean.calls) {
    SCOPED_TRACE("the failure of call " + std::to_string(call.second) + " of " + call.first);
    met.insert(call);
    Outcome expected = clean.outcome;
    std::vector<fake::DeliberateLeak> leaks = road.leaks;
    if (const Effect *effect = effectOf(call, effects)) {
      effect->change(expected);
      if (effect->leavesNothing) {
        leaks.clear();
      }
      leaks.insert(leaks.end(), effect->leaks.begin(), effect->leaks.end());
    }
    EXPECT_EQ(runOnce(road, &call, leaks).outcome, expected);
  }

  for (const Effect &effect : effects) {
    EXPECT_EQ(met.count({effect.function, effect.nth}), 1U)
        << "no call " << effect.nth << " of " << effect.function;
  }
}
