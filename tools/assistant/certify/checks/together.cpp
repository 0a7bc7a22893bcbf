// SPDX-License-Identifier: Apache-2.0
//
// Requests that come while another is worked on.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"

namespace norix::assistant::certify {
namespace {

constexpr int kBurst = 10;

/// Requests for one action that are sent without waiting in between.
class Burst {
public:
  Burst(Application &application, const ActionUse &use) : _application(application), _use(use) {}

  /// What was wrong with the answers; empty when nothing was.
  std::string run() {
    send();
    // The answers to the others are dropped here: which of them come is the application's choice.
    const Reply newest = _application.await(_newest);
    if (!newest.isAnswered()) {
      return "the newest of " + std::to_string(kBurst) + " requests at once " + newest.text;
    }
    // Whatever else is answered comes before the answer to one more request.
    const Request last = stateRequest();
    _application.session().client().send(last);
    return complaintUntil(last.requestId);
  }

private:
  void send() {
    for (int i = 0; i < kBurst; ++i) {
      const Request request = actionRequest(_use.action.id, _use.params.front());
      _application.session().client().send(request);
      _newest = request.requestId;
    }
  }

  std::string complaintUntil(std::uint64_t requestId) {
    const Answer answer = _application.session().next(_application.patience());
    if (answer.response.requestId() == requestId) {
      return {};
    }
    return answer.response.requestId() == _newest
               ? "the newest of the requests was answered twice"
               : "an older request was answered after the newest";
  }

  Application &_application;
  const ActionUse &_use;
  std::uint64_t _newest = 0;
};

std::string burst(Application &application, const ActionUse &use) {
  try {
    return Burst(application, use).run();
  } catch (const Error &error) {
    application.hangUp();
    return std::to_string(kBurst) + " requests at once ended the exchange: " + error.what();
  }
}

std::string stateDuring(Application &application, const ActionUse &use) {
  const Request action = actionRequest(use.action.id, use.params.front());
  const Request state = stateRequest();
  try {
    application.session().client().send(action);
    application.session().client().send(state);
  } catch (const Error &error) {
    return std::string("the two requests could not be sent: ") + error.what();
  }
  const Reply reply = application.await(state.requestId);
  return reply.isAnswered() ? ""
                            : "a request for the state, right behind one for '" + use.action.id
                                  + "', " + reply.text;
}

using Try = std::string (*)(Application &application, const ActionUse &use);

void judgeEach(Examination &examination, Verdicts &verdicts, Try attempt) {
  for (const ActionUse *const use : examination.answeringActions()) {
    const std::string wrong = attempt(examination.application(), *use);
    if (wrong.empty()) {
      verdicts.pass(use->action.id);
    } else {
      verdicts.fail(wrong, use->action.id);
    }
  }
}

} // namespace

void checkStateDuringAction(Examination &examination, Verdicts &verdicts) {
  const auto actions = examination.answeringActions();
  if (!examination.ordinaryUse().state.isAnswered()) {
    throw NotPossible("the state is not answered: see the check 'state-answered'");
  }
  judgeEach(examination, verdicts, stateDuring);
}

void checkBurstNewest(Examination &examination, Verdicts &verdicts) {
  judgeEach(examination, verdicts, burst);
}

} // namespace norix::assistant::certify
