// SPDX-License-Identifier: Apache-2.0
//
// Callbacks that are registered after the request for them has arrived.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

// Within the time for which a request waits for its callback.
constexpr double kSoonEnough = 0.05;

class ALateCallback : public IntegrationTest {};

TEST_F(ALateCallback, StillReceivesTheRequest) {
  TestApplication application(runtime);
  application.setActionWhenParked("playSoon", kSoonEnough);
  Session session(application.id());
  const Request request{"playSoon", "music", "{\"volume\":7}", 0xfedcba9876543210};

  session.client().send(request);
  const Received received = application.awaitRequest();

  EXPECT_EQ(received.actionId, "playSoon");
  EXPECT_EQ(received.actionType, "music");
  EXPECT_EQ(received.actionParams, "{\"volume\":7}");
  EXPECT_EQ(received.requestId, 0xfedcba9876543210);
}

TEST_F(ALateCallback, ReceivesTheActionIdInPlaceOfAHandle) {
  TestApplication application(runtime);
  application.setActionWhenParked("playSoon", kSoonEnough);
  Session session(application.id());

  session.client().send(actionRequest("playSoon"));

  EXPECT_EQ(application.awaitRequest().handleText, "playSoon");
}

TEST_F(ALateCallback, CannotAnswerAndIsToldNothing) {
  TestApplication application(runtime);
  application.setActionWhenParked("playSoon", kSoonEnough);
  Session session(application.id());
  session.client().send(actionRequest("playSoon"));

  const int result = application.completeAction(application.awaitRequest().number, "unheard");
  const Request next = stateRequest();
  session.client().send(next);

  EXPECT_EQ(result, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

TEST_F(ALateCallback, ServesTheNextRequestWhenItCameTooLate) {
  TestApplication application(runtime);
  application.answerAtOnce("playing");
  Session session(application.id());
  session.ask(actionRequest("play"), kBound);

  application.setAction("play");

  EXPECT_EQ(session.ask(actionRequest("play"), kBound).response.text(), "playing");
}

} // namespace
} // namespace integration
