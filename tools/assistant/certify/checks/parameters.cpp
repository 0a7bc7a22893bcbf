// SPDX-License-Identifier: Apache-2.0
//
// Parameters that are not as declared: the user hears an answer all the same, and the application
// lives.
#include "assistant/certify/parameters.h"

#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"

#include <chrono>

namespace norix::assistant::certify {
namespace {

// What an action may take of the time; it gets one text at least.
constexpr std::chrono::milliseconds kForEachAction(500);

using Make = std::vector<Params> (*)(const actions::Action &action);

// What was wrong; empty when nothing was.
std::string complaintAbout(Examination &examination, const ActionUse &use,
                           const std::vector<Params> &all) {
  const auto end = std::chrono::steady_clock::now() + kForEachAction;
  std::string tried;
  for (const Params &params : all) {
    tried = "the action '" + use.action.id + "' with " + params.description + " ";
    const std::uint64_t id = nextRequestId();
    const Reply reply = examination.application().ask(toBundle(use.action, params, id).get(), id);
    if (!reply.isAnswered()) {
      return tried + reply.text;
    }
    if (std::chrono::steady_clock::now() >= end) {
      break;
    }
  }
  const Reply after = examination.application().pulse();
  return after.isAnswered() ? "" : "after " + tried + "a request for the state " + after.text;
}

void judge(Examination &examination, Verdicts &verdicts, Make make) {
  for (const ActionUse *const use : examination.answeringActions()) {
    const std::vector<Params> all = make(use->action);
    if (all.empty()) {
      verdicts.skip("the action declares no parameters", use->action.id);
      continue;
    }
    const std::string wrong = complaintAbout(examination, *use, all);
    if (wrong.empty()) {
      verdicts.pass(use->action.id);
    } else {
      verdicts.fail(wrong, use->action.id);
    }
  }
}

} // namespace

void checkParametersMissing(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, missingParams);
}

void checkParametersEmpty(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, emptyParams);
}

void checkParametersUnknown(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, unknownParams);
}

void checkParametersWrongType(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, wronglyTypedParams);
}

void checkParametersNotJson(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, notJsonParams);
}

void checkParametersHuge(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, hugeParams);
}

void checkParametersNested(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, nestedParams);
}

void checkParametersNotUtf8(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, notUtf8Params);
}

void checkParametersNul(Examination &examination, Verdicts &verdicts) {
  judge(examination, verdicts, nulParams);
}

} // namespace norix::assistant::certify
