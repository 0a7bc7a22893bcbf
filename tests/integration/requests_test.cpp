// SPDX-License-Identifier: Apache-2.0
//
// How requests reach the application.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

class AnActionRequest : public IntegrationTest {};
class ARequest : public IntegrationTest {};
class ARequestHandle : public IntegrationTest {};

TEST_F(AnActionRequest, ReachesTheCallbackWithAllThatItCarries) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  const Request request{"play", "music", "{\"volume\":7}", 0xfedcba9876543210};

  session.client().send(request);
  const Received received = application.awaitRequest();

  EXPECT_EQ(received.kind, "action");
  EXPECT_EQ(received.actionId, "play");
  EXPECT_EQ(received.actionType, "music");
  EXPECT_EQ(received.actionParams, "{\"volume\":7}");
  EXPECT_EQ(received.requestId, 0xfedcba9876543210);
}

TEST_F(AnActionRequest, ReachesTheCallbackOfItsActionOnly) {
  TestApplication application(runtime);
  application.setAction("play");
  application.setAction("pause");
  Session session(application.id());

  session.client().send(actionRequest("pause"));

  EXPECT_EQ(application.awaitRequest().actionId, "pause");
}

TEST_F(AnActionRequest, IsNotServedAfterItsCallbackWasTakenAway) {
  TestApplication application(runtime);
  application.setAction("play");
  application.unsetAction("play");
  Session session(application.id());

  EXPECT_EQ(session.ask(actionRequest("play"), kBound).response.statusMessage(),
            "Action Execution callback not registered");
}

TEST_F(ARequest, AsksForTheStateByItsActionIdWhateverItsType) {
  TestApplication application(runtime);
  application.setState();
  Session session(application.id());

  session.client().send({"getAppContext", "action", "", 1});

  EXPECT_EQ(application.awaitRequest().kind, "state");
}

TEST_F(ARequest, AsksForAnActionWhenItsActionIdDiffersInCase) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("GetAppContext");
  Session session(application.id());

  session.client().send({"GetAppContext", "getAppContext", "", 1});

  EXPECT_EQ(application.awaitRequest().kind, "action");
}

TEST_F(ARequest, WithoutAnActionIdDoesNoHarm) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("well");
  Session session(application.id());
  const BundlePtr empty(bundle_create());

  session.client().send(empty.get());

  EXPECT_EQ(session.ask(stateRequest(), kBound).response.text(), "well");
}

TEST_F(ARequestHandle, IsNumberedFromTwoForBothKindsTogether) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("play");
  Session session(application.id());

  session.client().send(actionRequest("play"));
  session.client().send(stateRequest());
  session.client().send(actionRequest("play"));

  EXPECT_EQ(application.awaitRequest().handleNumber, 2);
  EXPECT_EQ(application.awaitRequest().handleNumber, 3);
  EXPECT_EQ(application.awaitRequest().handleNumber, 4);
}

TEST_F(ARequestHandle, StartsOverAfterAHundredRequests) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");
  Session session(application.id());
  for (int number = 2; number <= 99; ++number) {
    session.ask(actionRequest("play"), kBound);
    ASSERT_EQ(application.awaitRequest().handleNumber, number);
  }

  session.ask(actionRequest("play"), kBound);
  session.ask(actionRequest("play"), kBound);

  EXPECT_EQ(application.awaitRequest().handleNumber, 0);
  EXPECT_EQ(application.awaitRequest().handleNumber, 1);
}

TEST_F(ARequestHandle, NamesItsActionUntilTheNextRequest) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("play");
  Session session(application.id());

  session.client().send(actionRequest("play"));
  const int action = application.awaitRequest().number;
  const auto nameAtFirst = application.actionName(action);
  session.client().send(stateRequest());
  const int state = application.awaitRequest().number;

  EXPECT_EQ(nameAtFirst, "play");
  EXPECT_EQ(application.actionName(action), std::nullopt);
  EXPECT_EQ(application.actionName(state), "getAppContext");
}

} // namespace
} // namespace integration
