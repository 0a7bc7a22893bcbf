// SPDX-License-Identifier: Apache-2.0
//
// Every outcome of state and run: its exit status, its word, and what is said on both streams.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AnOutcome : public IntegrationTest {
protected:
  static void expect(const Outcome &outcome, int status, const std::string &word,
                     const std::string &message) {
    EXPECT_EQ(outcome.status, status);
    const json said = json::parse(outcome.out);
    EXPECT_EQ(said["outcome"], word);
    EXPECT_EQ(said["status"], status);
    EXPECT_THAT(said.value("message", ""), HasSubstr(message));
    EXPECT_THAT(outcome.err, HasSubstr(message));
  }

  // One that comes with the library's time limit.
  static void expectLate(const std::vector<std::string> &arguments, const std::string &word,
                         const std::string &message) {
    constexpr double kMoreThanTheLibrary = 50;
    Process assistant = startAssistant(arguments);
    Outcome outcome;
    outcome.status = assistant.wait(kMoreThanTheLibrary);
    outcome.out = assistant.readAll();
    outcome.err = assistant.errors();
    expect(outcome, 1, word, message);
  }

  static Process listenAs(const std::string &behaviour) {
    Process hostile({HOSTILE_APPLICATION, behaviour}, {{"AUL_APPID", "org.example.hostile"}});
    hostile.awaitLine("listening");
    return hostile;
  }
};

TEST_F(AnOutcome, AnsweredHasTheTextAndTheJsonInIt) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce(R"({"title":"Rain"})");

  const Outcome outcome = runAssistant({"run", application.id(), "play", "--json"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, IsEmpty());
  const json said = json::parse(outcome.out);
  EXPECT_EQ(said["outcome"], "answered");
  EXPECT_EQ(said["text"], R"({"title":"Rain"})");
  EXPECT_EQ(said["value"]["title"], "Rain");
}

TEST_F(AnOutcome, NamesAnActionThatIsNotRegistered) {
  const TestApplication application(runtime);

  expect(runAssistant({"run", application.id(), "play", "--json"}), 1, "action-not-registered",
         "Action Execution callback not registered: 'play'");
}

TEST_F(AnOutcome, NamesAStateThatIsNotRegistered) {
  const TestApplication application(runtime);

  expect(runAssistant({"state", application.id(), "--json"}), 1, "state-not-registered",
         "App state request callback not registered");
}

TEST_F(AnOutcome, NamesAnActionThatTimedOut) {
  TestApplication application(runtime);
  application.setAction("play");

  expectLate({"run", application.id(), "play", "--json"}, "action-timed-out",
             "'play' was not answered within 30 seconds");
}

TEST_F(AnOutcome, NamesAStateThatTimedOut) {
  TestApplication application(runtime);
  application.setState();

  expectLate({"state", application.id(), "--json"}, "state-timed-out",
             "App state request execution timed out");
}

TEST_F(AnOutcome, NamesARequestWhosePlaceANewerOneTook) {
  TestApplication application(runtime);
  application.setAction("play");
  application.setState();
  Process first = startAssistant({"run", application.id(), "play", "--json"});
  application.awaitRequest();

  Process second = startAssistant({"state", application.id(), "--id", "com.example.other"});
  application.awaitRequest();
  second.signal(SIGKILL);

  EXPECT_EQ(first.wait(40), 13);
  EXPECT_EQ(json::parse(first.readAll())["outcome"], "superseded");
  EXPECT_THAT(first.errors(), HasSubstr("the action 'play' is lost: a newer request"));
}

TEST_F(AnOutcome, NamesWhoListensWhenTheOneAskedDoesNot) {
  const TestApplication application(runtime);

  expect(runAssistant({"state", "org.example.absent", "--json"}), 3, "nobody-listens",
         "nobody listens under this id; these do: org.example.test");
}

TEST_F(AnOutcome, NamesAnApplicationThatListensAndDoesNotAccept) {
  TestApplication application(runtime);
  application.process().stop();

  expect(runAssistant({"state", application.id(), "--json", "--timeout", "0.3"}), 11, "busy",
         "listens and does not accept: no connection within 0.3 seconds");
}

TEST_F(AnOutcome, IsNoAnswerInTimeWhenSetCbIsNotAnswered) {
  const Process hostile = listenAs("no-result");

  expect(runAssistant({"state", "org.example.hostile", "--json", "--timeout", "0.5"}), 5,
         "no-answer", "no answer within 0.5 seconds to the state request");
}

TEST_F(AnOutcome, IsNoAnswerInTimeUnderAFloodOfOtherAnswers) {
  const Process hostile = listenAs("flood");

  expect(runAssistant({"state", "org.example.hostile", "--json", "--timeout", "0.5"}), 5,
         "no-answer", "no answer within 0.5 seconds");
}

TEST_F(AnOutcome, NamesAConnectionThatIsLost) {
  const Process hostile = listenAs("hang-up-on-request");

  expect(runAssistant({"state", "org.example.hostile", "--json"}), 6, "connection-lost",
         "the connection ended before the state request was answered");
}

TEST_F(AnOutcome, NamesAnAnswerThatIsMalformed) {
  const Process hostile = listenAs("empty-bundle");

  expect(runAssistant({"state", "org.example.hostile", "--json"}), 7, "malformed",
         "malformed response: no key 'status_code'");
}

TEST_F(AnOutcome, NamesWrongUsage) {
  expect(runAssistant({"state", "--json"}), 2, "wrong-usage", "APP is required");
}

struct Signal {
  int number;
  int status;
  const char *word;
};

void PrintTo(const Signal &tried, std::ostream *out) {
  *out << tried.word;
}

class ASignal : public IntegrationTest, public testing::WithParamInterface<Signal> {
protected:
  // One that watches for signals has begun to.
  static void awaitThreads(const Process &process, long count) {
    const std::filesystem::path tasks = "/proc/" + std::to_string(process.pid()) + "/task";
    while (process.isRunning()
           && std::distance(std::filesystem::directory_iterator(tasks),
                            std::filesystem::directory_iterator())
                  < count) {
    }
  }
};

INSTANTIATE_TEST_SUITE_P(, ASignal,
                         testing::Values(Signal{SIGINT, 130, "interrupted"},
                                         Signal{SIGTERM, 143, "terminated"},
                                         Signal{SIGHUP, 129, "hung-up"}));

TEST_P(ASignal, EndsACommandAtOnceWithoutAnAnswer) {
  TestApplication application(runtime);
  application.setState();
  Process assistant = startAssistant({"state", application.id()});
  const Received request = application.awaitRequest();

  assistant.signal(GetParam().number);

  EXPECT_EQ(assistant.wait(), GetParam().status);
  application.completeState(request.number, "too late");
  EXPECT_THAT(assistant.readAll(), IsEmpty());
}

// The main loop takes the signals over for a moment when it starts.
TEST_P(ASignal, EndsACommandWhoseMainLoopJustStarts) {
  TestApplication application(runtime);
  application.setState();
  Process assistant({ASSISTANT_COMMAND, "state", application.id()},
                    {{"LD_PRELOAD", EARLY_SIGNAL},
                     {"EARLY_SIGNAL", std::to_string(GetParam().number)},
                     {"ASAN_OPTIONS", "verify_asan_link_order=0"}});

  EXPECT_EQ(assistant.wait(), GetParam().status);
  EXPECT_THAT(assistant.readAll(), IsEmpty());
}

TEST_P(ASignal, IsAnOutcomeInJson) {
  TestApplication application(runtime);
  application.setState();
  Process assistant = startAssistant({"state", application.id(), "--json"});
  application.awaitRequest();

  assistant.signal(GetParam().number);

  EXPECT_EQ(assistant.wait(), GetParam().status);
  EXPECT_EQ(json::parse(assistant.readAll())["outcome"], GetParam().word);
}

TEST_P(ASignal, EndsACommandThatWaitsForAnApplicationToListen) {
  Process assistant = startAssistant({"state", "org.example.absent", "--wait", "60"});
  awaitThreads(assistant, 2);

  assistant.signal(GetParam().number);

  EXPECT_EQ(assistant.wait(), GetParam().status);
  EXPECT_THAT(assistant.readAll(), IsEmpty());
}

// What others send is shown on a terminal, and not obeyed by it.
TEST_F(AnOutcome, ShowsControlCharactersOfAnAnswer) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("a\x1b[31mb\tc\nd\x7f \xc2\x9b"
                           "2J");

  EXPECT_EQ(runAssistant({"state", application.id()}).out, "a\\e[31mb\tc\nd\\x7f \\xc2\\x9b2J\n");
}

TEST_F(AnOutcome, PassesControlCharactersOfAnAnswerWhenAskedTo) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("a\x1b[31mb");

  EXPECT_EQ(runAssistant({"state", application.id(), "--raw"}).out, "a\x1b[31mb\n");
}

TEST_F(AnOutcome, KeepsControlCharactersOutOfJsonAndLosesNone) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("a\x1b\x7f\xc2\x9b");

  const Outcome outcome = runAssistant({"state", application.id(), "--json"});

  EXPECT_THAT(outcome.out, AllOf(Not(HasSubstr("\x7f")), Not(HasSubstr("\xc2\x9b"))));
  EXPECT_EQ(json::parse(outcome.out)["text"], "a\x1b\x7f\xc2\x9b");
}

} // namespace
} // namespace integration
