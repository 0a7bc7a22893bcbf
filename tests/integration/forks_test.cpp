// SPDX-License-Identifier: Apache-2.0
//
// Applications that fork: connections and ports stay with the parent.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"

#include <Ecore.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace integration {
namespace {

class AChild : public IntegrationTest {
protected:
  void SetUp() override {
    application.setState();
    application.answerAtOnce("well");
  }

  static std::string answerIn(Session &session) {
    return session.ask(stateRequest(), kBound).response.text();
  }

  TestApplication application{runtime};
};

// Without the harness, whose processes reset SIGCHLD.
TEST(AMainLoop, LeavesTheExitStatusOfAChildToTheProgram) {
  constexpr int kStatus = 7;
  const norix::assistant::MainLoop loop;
  const pid_t child = fork();
  if (child == 0) {
    _exit(kStatus);
  }
  siginfo_t ended = {};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);

  ecore_main_loop_iterate();

  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WEXITSTATUS(status), kStatus);
}

class AChildThatEnds : public AChild, public testing::WithParamInterface<Named<const char *>> {};

INSTANTIATE_TEST_SUITE_P(, AChildThatEnds,
                         testing::Values(Named<const char *>{"WithoutAWord", "_exit"},
                                         Named<const char *>{"Tidily", "exit"}));

TEST_P(AChildThatEnds, LeavesItsParentsConnectionAndPortAlone) {
  Session before(application.id());

  ASSERT_EQ(application.fork(GetParam().value), 0);

  EXPECT_EQ(answerIn(before), "well");
  Session after(application.id());
  EXPECT_EQ(answerIn(after), "well");
}

TEST_F(AChild, ThatStaysLetsItsParentGoOn) {
  Session before(application.id());

  ASSERT_EQ(application.fork("stay"), 0);

  EXPECT_EQ(answerIn(before), "well");
  Session after(application.id());
  EXPECT_EQ(answerIn(after), "well");
}

TEST_F(AChild, ThatStaysDoesNotKeepItsDeadParentsConnection) {
  Session session(application.id());
  ASSERT_EQ(application.fork("stay"), 0);

  application.process().signal(SIGKILL);

  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
}

TEST_F(AChild, ThatStaysDoesNotKeepItsParentsConnectionWhenThatStops) {
  Session session(application.id());
  ASSERT_EQ(application.fork("stay"), 0);

  application.deinitialize();

  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
}

TEST_F(AChild, ThatStaysDoesNotKeepItsDeadParentsPort) {
  ASSERT_EQ(application.fork("stay"), 0);
  application.process().signal(SIGKILL);
  application.process().wait();

  TestApplication restarted(runtime);
  restarted.setState();
  restarted.answerAtOnce("back");
  Session session(restarted.id());

  EXPECT_EQ(answerIn(session), "back");
}

TEST_F(AChild, ThatIsAnotherProgramInheritsNoSocket) {
  const Session session(application.id());

  EXPECT_EQ(application.countSocketsOfAProgram(), 0);
}

} // namespace
} // namespace integration
