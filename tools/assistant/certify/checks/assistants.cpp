// SPDX-License-Identifier: Apache-2.0
//
// Assistants that come, go, die and do not read; and those that the allow list keeps out.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Peer.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/launch/ExchangeTrace.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace norix::assistant::certify {
namespace {

constexpr const char *kAssistant = "com.valtren.tizen.norix";
constexpr const char *kOther = "com.valtren.tizen.norix.other";
constexpr const char *kIdVariable = "AUL_APPID";
constexpr int kConnections = 20;
constexpr int kMilliseconds = 1000;

// A request that takes the application time, so that it is in progress when the assistant goes.
Request lengthyRequest(Examination &examination) {
  try {
    const auto actions = examination.answeringActions();
    const ActionUse &slowest = **std::max_element(
        actions.begin(), actions.end(),
        [](const ActionUse *a, const ActionUse *b) { return a->seconds < b->seconds; });
    return actionRequest(slowest.action.id, slowest.params.front());
  } catch (const NotPossible &) {
    return stateRequest();
  }
}

// The answer to the second is on its way when the assistant goes.
std::vector<Request> requestsToLeave(Examination &examination) {
  return {lengthyRequest(examination), stateRequest()};
}

// Waits until the application has done with a request that nobody waits for.
void awaitDone(const Application &application, launch::ExchangeTrace &trace,
               std::uint64_t requestId) {
  (void)trace.finish(requestId, static_cast<int>(application.patience()) * kMilliseconds);
}

// Whether it is well; otherwise the verdict says so.
bool isWell(Application &application, const std::string &when, Verdicts &verdicts) {
  const Reply reply = application.pulse();
  if (!reply.isAnswered()) {
    verdicts.fail(when + " a request for the state " + reply.text);
  }
  return reply.isAnswered();
}

void judgePulse(Application &application, const std::string &when, Verdicts &verdicts) {
  if (isWell(application, when, verdicts)) {
    verdicts.pass();
  }
}

void requireWell(Application &application) {
  if (!application.pulse().isAnswered()) {
    throw NotPossible("the application does not answer anyway: see the check 'state-answered'");
  }
}

} // namespace

void checkAssistantLeaves(Examination &examination, Verdicts &verdicts) {
  const std::vector<Request> requests = requestsToLeave(examination);
  Application &application = examination.application();
  requireWell(application);
  for (const Request &request : requests) {
    launch::ExchangeTrace trace(application.id());
    application.session().client().send(request);
    application.hangUp();
    awaitDone(application, trace, request.requestId);
    if (!isWell(application, "after an assistant left without waiting for its answer,", verdicts)) {
      return;
    }
  }
  verdicts.pass();
}

void checkAssistantKilled(Examination &examination, Verdicts &verdicts) {
  const std::vector<Request> requests = requestsToLeave(examination);
  Application &application = examination.application();
  requireWell(application);
  for (const Request &request : requests) {
    application.hangUp();
    launch::ExchangeTrace trace(application.id());
    Peer assistant([&](int /*number*/) { application.session().client().send(request); });
    if (!assistant.next()) {
      throw NotPossible("another process of the assistant cannot send");
    }
    assistant.kill();
    awaitDone(application, trace, request.requestId);
    if (!isWell(application, "after an assistant was killed before its answer,", verdicts)) {
      return;
    }
  }
  verdicts.pass();
}

void checkAssistantNeverReads(Examination &examination, Verdicts &verdicts) {
  constexpr int kSteps = 4;
  // So many fit into a socket's buffer.
  constexpr int kRequests = 200;
  Application &application = examination.application();
  requireWell(application);
  application.hangUp();
  std::uint64_t last = nextRequestId();
  Peer assistant([&](int /*number*/) {
    setenv(kIdVariable, kOther, 1);
    for (int i = 1; i <= kRequests; ++i) {
      Request request = stateRequest();
      request.requestId = last + static_cast<std::uint64_t>(i);
      application.session().client().send(request);
    }
    last += kRequests;
  });
  for (int step = 0; step < kSteps && application.isRunning(); ++step) {
    launch::ExchangeTrace trace(application.id());
    if (!assistant.next() && application.isRunning()) {
      throw NotPossible("the application does not serve a second assistant");
    }
    last += kRequests;
    awaitDone(application, trace, last);
  }
  judgePulse(application, "while another assistant sends requests and never reads an answer,",
             verdicts);
}

void checkReconnect(Examination &examination, Verdicts &verdicts) {
  const std::unique_ptr<Application> application = examination.start();
  for (int count = 1; count <= kConnections; ++count) {
    const Reply reply = application->pulse();
    if (!reply.isAnswered()) {
      verdicts.fail("on connection " + std::to_string(count) + ", a request for the state "
                    + reply.text);
      return;
    }
    application->hangUp();
  }
  verdicts.pass();
}

void checkAllowListWith(Examination &examination, Verdicts &verdicts) {
  launch::LaunchOptions options = examination.launchOptions();
  options.allowList =
      examination.folder().write("with", std::string(kAssistant) + "\n" + kOther + "\n");
  judgePulse(*examination.start(options), "with the assistant on the allow list,", verdicts);
}

void checkAllowListWithout(Examination &examination, Verdicts &verdicts) {
  launch::LaunchOptions options = examination.launchOptions();
  options.allowList = examination.folder().write("without", std::string(kOther) + "\n");
  const std::unique_ptr<Application> application = examination.start(options);
  const Reply reply = application->pulse();
  if (reply.isAnswered()) {
    verdicts.fail("the assistant was served, and is not on the allow list");
  } else if (reply.kind != Reply::Kind::Refused) {
    verdicts.fail("an assistant that is not on the allow list is to be refused, and its request "
                  + reply.text);
  } else if (!application->isRunning()) {
    verdicts.fail("the application ended when it had refused an assistant");
  } else {
    verdicts.pass();
  }
}

} // namespace norix::assistant::certify
