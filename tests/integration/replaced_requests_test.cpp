// SPDX-License-Identifier: Apache-2.0
//
// One request is in progress at a time: the fate of replaced requests and of their answers. That an
// answer was not sent is shown by the answer that comes next.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

#include <csignal>

namespace integration {
namespace {

class AReplacedRequest : public IntegrationTest {};
class ASecondAnswer : public IntegrationTest {};

TEST_F(AReplacedRequest, IsNotAnsweredByItsOwnAnswer) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  const Request newer = actionRequest("play");

  session.client().send(actionRequest("play"));
  session.client().send(newer);
  const int staleNumber = application.awaitRequest().number;
  const int freshNumber = application.awaitRequest().number;
  const int staleResult = application.completeAction(staleNumber, "stale");
  const int result = application.completeAction(freshNumber, "fresh");

  EXPECT_EQ(staleResult, NORIX_ERROR_NONE);
  EXPECT_EQ(result, NORIX_ERROR_NONE);
  const Answer answer = session.next(kBound);
  EXPECT_EQ(answer.response.requestId(), newer.requestId);
  EXPECT_EQ(answer.response.text(), "fresh");
}

TEST_F(AReplacedRequest, StaysUnansweredAfterTheNewerOneWasAnswered) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  session.client().send(actionRequest("play"));
  const int stale = application.awaitRequest().number;
  session.ask(stateRequest(), kBound);

  const int staleResult = application.completeAction(stale, "stale");
  const Request next = stateRequest();
  session.client().send(next);

  EXPECT_EQ(staleResult, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

TEST_F(AReplacedRequest, ForTheStateIsReplacedByAnAction) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("play");
  Session session(application.id());
  const Request newer = actionRequest("play");

  session.client().send(stateRequest());
  session.client().send(newer);
  const int staleNumber = application.awaitRequest().number;
  const int freshNumber = application.awaitRequest().number;
  const int staleResult = application.completeState(staleNumber, "stale");
  application.completeAction(freshNumber, "fresh");

  EXPECT_EQ(staleResult, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), newer.requestId);
}

TEST_F(AReplacedRequest, ThatWaitsForItsCallbackIsForgotten) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("well");
  Session session(application.id());
  const Request newer = stateRequest();
  const Request last = actionRequest("unknown");

  // Stopped meanwhile, so that the second is there before the first is given up.
  application.process().signal(SIGSTOP);
  session.client().send(actionRequest("unknown"));
  session.client().send(newer);
  application.process().signal(SIGCONT);
  const Answer answer = session.next(kBound);
  session.client().send(last);

  EXPECT_EQ(answer.response.requestId(), newer.requestId);
  EXPECT_EQ(session.next(kBound).response.requestId(), last.requestId);
}

TEST_F(ASecondAnswer, ToAnActionIsDropped) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  const Request next = stateRequest();
  session.client().send(actionRequest("play"));
  const int request = application.awaitRequest().number;
  application.completeAction(request, "first");

  const int result = application.completeAction(request, "second");
  session.client().send(next);

  EXPECT_EQ(result, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.text(), "first");
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

TEST_F(ASecondAnswer, ToAStateRequestIsRefused) {
  TestApplication application(runtime);
  application.setState();
  Session session(application.id());
  const Request next = actionRequest("unknown");
  session.client().send(stateRequest());
  const int request = application.awaitRequest().number;
  application.completeState(request, "first");

  const int result = application.completeState(request, "second");
  session.client().send(next);

  EXPECT_EQ(result, NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(session.next(kBound).response.text(), "first");
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

} // namespace
} // namespace integration
