// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/exchangeOutcome.h"

#include "assistant/cli/Listener.h"
#include "assistant/client/words.h"

#include <utility>

namespace norix::assistant::cli {
namespace {

Json factsOf(const Subject &subject) {
  Json facts{{"app", subject.app}, {"request", subject.action.empty() ? "state" : "action"}};
  if (!subject.action.empty()) {
    facts["action"] = subject.action;
  }
  facts["sender"] = subject.sender;
  return facts;
}

} // namespace

Subject subjectOf(const ExchangeOptions &options, const Request &request) {
  Subject subject;
  subject.app = options.appId;
  subject.sender = options.senderId;
  const bool isState = request.actionId == kStateActionId;
  subject.action = isState ? "" : request.actionId;
  subject.request = isState ? "state request" : "action '" + request.actionId + "'";
  return subject;
}

Outcome outcomeOf(Failure failure) {
  return outcomeNamed(wordOf(failure));
}

Ending endingOf(const Response &response, Subject subject) {
  if (!response.succeeded()) {
    subject.detail = response.statusMessage();
    return failure(outcomeNamed(wordOf(response)), subject);
  }
  Json facts = factsOf(subject);
  facts["text"] = response.text();
  // An answer that is JSON is there as such too.
  const Json value = Json::parse(response.text(), nullptr, false);
  if (!value.is_discarded()) {
    facts["value"] = value;
  }
  Ending ending;
  ending.subject = std::move(subject);
  ending.text = response.text();
  ending.facts = std::move(facts);
  return ending;
}

Ending failure(Outcome outcome, const Subject &subject) {
  Ending ending;
  ending.outcome = outcome;
  ending.subject = subject;
  ending.facts = factsOf(subject);
  return ending;
}

std::string describeListeners() {
  std::string text;
  for (const Listener &listener : findListeners()) {
    text += (text.empty() ? "these do: " : ", ") + listener.appId;
  }
  return text.empty() ? "no application of this user does" : text;
}

} // namespace norix::assistant::cli
