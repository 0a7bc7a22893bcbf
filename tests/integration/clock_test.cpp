// SPDX-License-Identifier: Apache-2.0
//
// The wall clock jumps by hours, forward and back: all waits keep their length.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

#include <cstdlib>

namespace integration {
namespace {

constexpr double kLongerThanTheLibrary = 45.0;

// A sanitizer wants to be the first library; the clock may stand before it.
const Process::Environment kJumpingClock = {{"LD_PRELOAD", JUMPING_CLOCK},
                                            {"ASAN_OPTIONS", "verify_asan_link_order=0"}};

class AJumpingClock : public IntegrationTest {
protected:
  static TestApplication::Options options() {
    TestApplication::Options options;
    options.environment = kJumpingClock;
    return options;
  }

  TestApplication application{TestApplication::initialised(runtime, options())};
};

TEST_F(AJumpingClock, IsWhatTheApplicationSees) {
  constexpr int kHour = 60;
  const int first = application.minutesOnTheWallClock();
  const int second = application.minutesOnTheWallClock();

  EXPECT_GT(std::abs(second - first), 5 * kHour);
}

TEST_F(AJumpingClock, LetsARequestWait) {
  application.setAction("play");
  Session session(application.id());
  const Request request = actionRequest("play");
  session.client().send(request);
  const int number = application.awaitRequest().number;
  for (int turn = 0; turn < 20; ++turn) {
    application.minutesOnTheWallClock();
  }

  EXPECT_EQ(application.completeAction(number, "at last"), NORIX_ERROR_NONE);

  EXPECT_EQ(session.await(request.requestId, kBound).response.text(), "at last");
}

TEST_F(AJumpingClock, LetsAnUnknownActionWaitUntilItIsRegistered) {
  application.answerAtOnce("unheard");
  application.setActionWhenParked("late", 0.03);
  Session session(application.id());
  session.client().send(actionRequest("late"));

  EXPECT_EQ(application.awaitRequest().kind, "action");
}

TEST_F(AJumpingClock, EndsTheWaitForAnAnswerAllTheSame) {
  application.setAction("play");
  Session session(application.id());

  const Answer answer = session.ask(actionRequest("play"), kLongerThanTheLibrary);

  EXPECT_EQ(answer.response.statusMessage(), "Action execution request timed out");
}

TEST_F(AJumpingClock, DoesNotDisturbAnAssistant) {
  application.setAction("play");
  application.answerAtOnce("playing");

  const Outcome outcome = runAssistant({"run", application.id(), "play"}, kJumpingClock);

  EXPECT_EQ(outcome.out, "playing\n") << outcome.err;
}

} // namespace
} // namespace integration
