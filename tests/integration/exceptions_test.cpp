// SPDX-License-Identifier: Apache-2.0
//
// Callbacks that throw, in an application whose main loop is Ecore's.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

constexpr const char *kStopped = "stopped an exception: a mistake of the application";

class ACallbackThatThrows : public IntegrationTest {
protected:
  TestApplication application{runtime};
};

TEST_F(ACallbackThatThrows, IsLoggedAndLeavesTheApplicationServing) {
  application.setAction("play");
  application.throwAtOnce();
  application.reportLog(kStopped);
  Session session(application.id());

  session.client().send(actionRequest("play"));
  application.awaitRequest();
  application.awaitLog();
  application.answerAtOnce("playing");

  EXPECT_EQ(session.ask(actionRequest("play"), kBound).response.text(), "playing");
}

TEST_F(ACallbackThatThrows, EndsTheTimerThatDeliveredItsRequestLate) {
  application.setActionWhenParked("playSoon", 0.05);
  application.throwAtOnce();
  application.reportLog(kStopped);
  Session session(application.id());
  session.client().send(actionRequest("playSoon"));
  application.awaitRequest();
  application.awaitLog();

  // Nothing is delivered a second time: the next request that the application sees is the next one.
  application.answerAtOnce("playing");
  session.ask(actionRequest("playSoon"), kBound);

  EXPECT_NE(application.awaitRequest().handleText, "playSoon");
}

} // namespace
} // namespace integration
