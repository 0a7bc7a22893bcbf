// SPDX-License-Identifier: Apache-2.0
//
// What came of using the application as users do, against what it declares.
#include "assistant/actions/check.h"
#include "assistant/actions/parseShallow.h"
#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/launch/registered.h"

#include <algorithm>
#include <map>
#include <set>

namespace norix::assistant::certify {
namespace {

// Findings that checks of their own are about.
const std::set<std::string> kElsewhere = {"never-answered", "answered-twice"};

std::string sentence(const std::string &action, const std::string &what) {
  return "the action '" + action + "' is " + what;
}

void failEach(const std::vector<std::string> &actions, const std::string &what,
              Verdicts &verdicts) {
  for (const std::string &action : actions) {
    verdicts.fail(sentence(action, what), action);
  }
  if (actions.empty()) {
    verdicts.pass();
  }
}

void judgeExamples(const OrdinaryUse &all, const ActionUse &use, Verdicts &verdicts) {
  for (std::size_t i = 0; i < use.replies.size(); ++i) {
    if (!use.replies[i].isAnswered()) {
      verdicts.fail("the action '" + use.action.id + "' with " + use.params[i] + " "
                        + use.replies[i].text,
                    use.action.id, eventsOf(all, use.requestIds[i]));
      return;
    }
  }
  verdicts.pass(use.action.id);
}

bool hasAnswered(const OrdinaryUse &use) {
  return use.state.isAnswered()
         || std::any_of(use.actions.begin(), use.actions.end(),
                        [](const ActionUse &action) { return action.isAnswered(); });
}

} // namespace

void checkDeclaredRegistered(Examination &examination, Verdicts &verdicts) {
  const launch::Drift drift =
      launch::compare(examination.declared(), examination.ordinaryUse().registered);
  failEach(drift.notRegistered, "declared and not registered", verdicts);
}

void checkRegisteredDeclared(Examination &examination, Verdicts &verdicts) {
  const launch::Drift drift =
      launch::compare(examination.declared(), examination.ordinaryUse().registered);
  failEach(drift.notDeclared, "registered and not declared", verdicts);
}

void checkStateAnswered(Examination &examination, Verdicts &verdicts) {
  const Reply &reply = examination.ordinaryUse().state;
  if (reply.isAnswered()) {
    verdicts.pass();
  } else {
    verdicts.fail("a request for the state " + reply.text);
  }
}

void checkStateForm(Examination &examination, Verdicts &verdicts) {
  const auto &state = examination.declared().state;
  if (!state || !state->form) {
    throw NotPossible("no form of the state is declared");
  }
  const Reply &reply = examination.ordinaryUse().state;
  if (!reply.isAnswered()) {
    throw NotPossible("the state is not answered: see the check 'state-answered'");
  }
  const actions::Json value = actions::parseShallow<actions::Json>(reply.text);
  if (value.is_discarded()) {
    verdicts.fail("the state is not JSON: '" + reply.text + "'");
    return;
  }
  const auto violations = actions::check(*state->form, value);
  if (violations.empty()) {
    verdicts.pass();
  } else {
    verdicts.fail("the state has another form: " + violations.front().toString());
  }
}

void checkExamplesAnswered(Examination &examination, Verdicts &verdicts) {
  if (examination.declared().actions.empty()) {
    throw NotPossible("the application declares no actions");
  }
  for (const ActionUse &use : examination.ordinaryUse().actions) {
    judgeExamples(examination.ordinaryUse(), use, verdicts);
  }
  for (const std::string &action : examination.ordinaryUse().leftOut) {
    verdicts.skip("the action '" + action
                      + "' is declared as destructive; --destructive has it executed",
                  action);
  }
}

void checkAnsweredOnce(Examination &examination, Verdicts &verdicts) {
  const OrdinaryUse &use = examination.ordinaryUse();
  if (!hasAnswered(use)) {
    throw NotPossible("the application answers nothing");
  }
  for (const trace::Finding &finding : use.findings) {
    if (finding.word == "answered-twice") {
      verdicts.fail(finding.sentence);
      return;
    }
  }
  verdicts.pass();
}

void checkFindings(Examination &examination, Verdicts &verdicts) {
  std::map<std::string, std::string> found;
  for (const trace::Finding &finding : examination.ordinaryUse().findings) {
    if (kElsewhere.count(finding.word) == 0) {
      found.emplace(finding.word, finding.sentence);
    }
  }
  for (const auto &[word, sentence] : found) {
    verdicts.fail(sentence, word);
  }
  if (found.empty()) {
    verdicts.pass();
  }
}

} // namespace norix::assistant::certify
