// SPDX-License-Identifier: Apache-2.0
//
// Either side is killed, or stopped and continued, at every step of an exchange.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"
#include "integration/peer/steps.h"

#include <array>
#include <csignal>
#include <optional>
#include <thread>

namespace integration {
namespace {

// Longer than what the sockets hold: half of it waits in the application.
const std::string kLongAnswer(std::size_t{1} << 20, 'x');

// The application, and an assistant that does one step after the other.
class AnExchange : public IntegrationTest,
                   public testing::WithParamInterface<Named<AssistantStep>> {
protected:
  void SetUp() override { application.setAction("play"); }

  void advanceTo(AssistantStep wanted) {
    while (_done < static_cast<int>(wanted)) {
      beginNextStep();
      ASSERT_EQ(assistant.readLine(), "done") << "step " << _done;
    }
  }

  void beginNextStep() {
    if (static_cast<AssistantStep>(++_done) == AssistantStep::Answered) {
      application.completeAction(application.awaitRequest().number, kLongAnswer);
    }
    assistant.writeLine("next");
  }

  bool dependsOnTheApplicationsWord() const {
    return static_cast<AssistantStep>(_done + 1) == AssistantStep::Answered;
  }

  static void expectServed(TestApplication &anApplication) {
    anApplication.setAction("play");
    anApplication.answerAtOnce("served");
    Session other(anApplication.id());
    EXPECT_EQ(other.ask(actionRequest("play"), kBound).response.text(), "served");
  }

  // Whether the application comes to have so many files open. Each call is a turn of its loop.
  bool comesToHaveOpen(long files) {
    constexpr int kMostTurns = 2000;
    for (int turn = 0; turn < kMostTurns && application.process().openFiles() != files; ++turn) {
      application.setAction("play");
    }
    return application.process().openFiles() == files;
  }

  TestApplication application{runtime};
  Process assistant{{RAW_PEER, "assistant", application.id()}};

private:
  int _done = -1;
};

constexpr std::array kAssistantSteps{
    Named<AssistantStep>{"MainConnected", AssistantStep::MainConnected},
    Named<AssistantStep>{"HalfHelloSent", AssistantStep::HalfHelloSent},
    Named<AssistantStep>{"HelloSent", AssistantStep::HelloSent},
    Named<AssistantStep>{"CallbackConnected", AssistantStep::CallbackConnected},
    Named<AssistantStep>{"CallbackHelloSent", AssistantStep::CallbackHelloSent},
    Named<AssistantStep>{"Welcomed", AssistantStep::Welcomed},
    Named<AssistantStep>{"HalfSetCbSent", AssistantStep::HalfSetCbSent},
    Named<AssistantStep>{"SetCbSent", AssistantStep::SetCbSent},
    Named<AssistantStep>{"ResultRead", AssistantStep::ResultRead},
    Named<AssistantStep>{"HalfRequestSent", AssistantStep::HalfRequestSent},
    Named<AssistantStep>{"RequestSent", AssistantStep::RequestSent},
    Named<AssistantStep>{"Answered", AssistantStep::Answered},
    Named<AssistantStep>{"HalfAnswerRead", AssistantStep::HalfAnswerRead},
    Named<AssistantStep>{"AnswerRead", AssistantStep::AnswerRead}};
static_assert(kAssistantSteps.size() == static_cast<std::size_t>(AssistantStep::Count));

INSTANTIATE_TEST_SUITE_P(After, AnExchange, testing::ValuesIn(kAssistantSteps));

TEST_P(AnExchange, LeavesNothingWhenTheAssistantIsKilled) {
  const long before = application.process().openFiles();
  advanceTo(GetParam().value);

  assistant.signal(SIGKILL);

  EXPECT_EQ(assistant.wait(), -SIGKILL);
  EXPECT_TRUE(comesToHaveOpen(before)) << application.process().openFiles() << ", not " << before;
  expectServed(application);
}

TEST_P(AnExchange, GoesOnWhenTheAssistantIsStoppedAndContinued) {
  advanceTo(GetParam().value);

  assistant.stop();
  { const Session served(application.id()); }
  assistant.signal(SIGCONT);

  advanceTo(AssistantStep::AnswerRead);
}

TEST_P(AnExchange, EndsWhenTheApplicationIsKilled) {
  advanceTo(GetParam().value);

  application.process().signal(SIGKILL);

  EXPECT_EQ(application.process().wait(), -SIGKILL);
  assistant.writeLine("end");
  EXPECT_EQ(assistant.readLine(), "ended");
  TestApplication restarted(runtime);
  expectServed(restarted);
}

TEST_P(AnExchange, GoesOnWhenTheApplicationIsStoppedAndContinued) {
  advanceTo(GetParam().value);
  const bool acts =
      !dependsOnTheApplicationsWord() && GetParam().value != AssistantStep::AnswerRead;

  application.process().stop();
  if (acts) {
    beginNextStep();
  }
  application.process().signal(SIGCONT);

  if (acts) {
    EXPECT_EQ(assistant.readLine(), "done");
  }
  advanceTo(AssistantStep::AnswerRead);
  expectServed(application);
}

struct Step {
  ApplicationStep step;
  std::optional<Failure> failure; // What an assistant sees of an application that is killed there.
};

// An application that does one step after the other, and stumbles after one of them.
class AnApplication : public IntegrationTest, public testing::WithParamInterface<Named<Step>> {
protected:
  static Process stumbling(int signal) {
    Process application({RAW_PEER, "application", kId,
                         std::to_string(static_cast<int>(GetParam().value.step)),
                         std::to_string(signal)});
    application.readLine();
    return application;
  }

  static std::string exchange() {
    Session session(kId, kBound);
    return session.ask(actionRequest("play"), kBound).response.text();
  }

  static constexpr const char *kId = "org.example.stumbling";
};

constexpr std::array kApplicationSteps{
    Named<Step>{"MainAccepted", {ApplicationStep::MainAccepted, Failure::CannotConnect}},
    Named<Step>{"BothAccepted", {ApplicationStep::BothAccepted, Failure::CannotConnect}},
    Named<Step>{"HellosRead", {ApplicationStep::HellosRead, Failure::CannotConnect}},
    Named<Step>{"HalfWelcomeSent", {ApplicationStep::HalfWelcomeSent, Failure::CannotConnect}},
    Named<Step>{"MainWelcomed", {ApplicationStep::MainWelcomed, Failure::CannotConnect}},
    Named<Step>{"BothWelcomed", {ApplicationStep::BothWelcomed, Failure::Disconnected}},
    Named<Step>{"SetCbRead", {ApplicationStep::SetCbRead, Failure::Disconnected}},
    Named<Step>{"HalfResultSent", {ApplicationStep::HalfResultSent, Failure::Disconnected}},
    Named<Step>{"ResultSent", {ApplicationStep::ResultSent, Failure::Disconnected}},
    Named<Step>{"RequestRead", {ApplicationStep::RequestRead, Failure::Disconnected}},
    Named<Step>{"HalfAnswerSent", {ApplicationStep::HalfAnswerSent, Failure::Disconnected}},
    Named<Step>{"AnswerSent", {ApplicationStep::AnswerSent, std::nullopt}}};
static_assert(kApplicationSteps.size() == static_cast<std::size_t>(ApplicationStep::Count));

INSTANTIATE_TEST_SUITE_P(After, AnApplication, testing::ValuesIn(kApplicationSteps));

TEST_P(AnApplication, ThatIsKilledFailsItsAssistantAtOnce) {
  Process application = stumbling(SIGKILL);

  EXPECT_EQ(failureOf(exchange), GetParam().value.failure);

  EXPECT_EQ(application.wait(), -SIGKILL);
}

TEST_P(AnApplication, ThatIsStoppedAndContinuedAnswers) {
  Process application = stumbling(SIGSTOP);
  std::thread continuing([&application] {
    application.awaitStop();
    application.signal(SIGCONT);
  });

  EXPECT_EQ(exchange(), "played");

  continuing.join();
  EXPECT_EQ(application.wait(), 0);
}

} // namespace
} // namespace integration
