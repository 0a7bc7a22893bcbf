// SPDX-License-Identifier: Apache-2.0
//
// Parameters that are not as declared: the user hears an answer all the same, and the application
// lives.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/launch/ExchangeTrace.h"

#include <chrono>

namespace norix::assistant::certify {
namespace {

// What an action may take of the time; it gets one text at least.
constexpr std::chrono::milliseconds kForEachAction(500);

/// One action that gets parameters of a kind.
class Attempt {
public:
  Attempt(Examination &examination, const actions::Action &action)
      : _application(examination.application()), _action(action), _trace(_application.id()) {}

  void run(const std::vector<Params> &all, Verdicts &verdicts) {
    const auto end = std::chrono::steady_clock::now() + kForEachAction;
    for (const Params &params : all) {
      const Reply reply = send(params);
      if (!reply.isAnswered()) {
        fail(_tried + reply.text, verdicts);
        return;
      }
      if (std::chrono::steady_clock::now() >= end) {
        break;
      }
    }
    const Reply after = _application.pulse();
    if (after.isAnswered()) {
      verdicts.pass(_action.id);
    } else {
      fail("after " + _tried + "a request for the state " + after.text, verdicts);
    }
  }

private:
  Reply send(const Params &params) {
    _tried = "the action '" + _action.id + "' with " + params.description + " ";
    _requestId = nextRequestId();
    return _application.ask(toBundle(_action, params, _requestId).get(), _requestId);
  }

  void fail(const std::string &seen, Verdicts &verdicts) {
    verdicts.fail(seen, _action.id, _trace.finish(_requestId));
  }

  Application &_application;
  const actions::Action &_action;
  launch::ExchangeTrace _trace;
  std::string _tried;
  std::uint64_t _requestId = 0;
};

} // namespace

void judgeParameters(Examination &examination, Verdicts &verdicts, MakeParams make) {
  for (const ActionUse *const use : examination.answeringActions()) {
    const std::vector<Params> all = make(use->action);
    if (all.empty()) {
      verdicts.skip("the action declares no parameters", use->action.id);
    } else {
      Attempt(examination, use->action).run(all, verdicts);
    }
  }
}

} // namespace norix::assistant::certify
