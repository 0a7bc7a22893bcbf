// SPDX-License-Identifier: Apache-2.0
//
// Processes that die, or hang up, in the middle of an exchange.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

#include <csignal>

namespace integration {
namespace {

class AKilledAssistant : public IntegrationTest {
protected:
  // Has an assistant killed while the application has its request.
  static int killAssistantOf(TestApplication &application) {
    Process assistant({ASSISTANT_COMMAND, "run", application.id(), "play"});
    const int request = application.awaitRequest().number;
    application.reportLog("Call stub OnTerminate");
    assistant.signal(SIGKILL);
    application.awaitLog();
    return request;
  }
};
class AKilledApplication : public IntegrationTest {};
class ADisconnectedAssistant : public IntegrationTest {};

TEST_F(AKilledAssistant, CannotBeAnswered) {
  TestApplication application(runtime);
  application.setAction("play");
  const int request = killAssistantOf(application);

  EXPECT_EQ(application.completeAction(request, "unheard"), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(AKilledAssistant, LeavesTheApplicationServingTheNext) {
  TestApplication application(runtime);
  application.setAction("play");
  application.completeAction(killAssistantOf(application), "unheard");
  application.answerAtOnce("playing");

  Session session(application.id());

  EXPECT_EQ(session.ask(actionRequest("play"), kBound).response.text(), "playing");
}

TEST_F(AKilledAssistant, LeavesNothingOpenInTheApplication) {
  TestApplication application(runtime);
  application.setAction("play");
  killAssistantOf(application);
  application.setAction("play"); // A turn of its loop later the connection is closed.
  const long before = application.process().openFiles();

  killAssistantOf(application);
  application.setAction("play");

  EXPECT_EQ(application.process().openFiles(), before);
}

TEST_F(AKilledApplication, EndsTheWaitOfItsAssistant) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  session.client().send(actionRequest("play"));
  application.awaitRequest();

  application.process().signal(SIGKILL);

  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
}

TEST_F(AKilledApplication, CannotBeConnectedTo) {
  TestApplication application(runtime);

  application.process().signal(SIGKILL);
  application.process().wait();

  EXPECT_EQ(failureOf([&] { Session session(application.id()); }), Failure::CannotConnect);
}

TEST_F(AKilledApplication, MayBeStartedAgain) {
  TestApplication killed(runtime);
  killed.process().signal(SIGKILL);
  killed.process().wait();

  TestApplication restarted(runtime);
  restarted.setState();
  restarted.answerAtOnce("back");
  Session session(restarted.id());

  EXPECT_EQ(session.ask(stateRequest(), kBound).response.text(), "back");
}

TEST_F(ADisconnectedAssistant, MayConnectAgain) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("well");
  { const Session first(application.id()); }

  Session second(application.id());

  EXPECT_EQ(second.ask(stateRequest(), kBound).response.text(), "well");
}

} // namespace
} // namespace integration
