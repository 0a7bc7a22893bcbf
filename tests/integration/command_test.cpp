// SPDX-License-Identifier: Apache-2.0
//
// norix-assistant from outside: its exit status and both of its streams.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <gmock/gmock.h>

#include <csignal>

namespace integration {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

enum Status {
  Answered = 0,
  FailureResponse = 1,
  WrongUsage = 2,
  CannotConnect = 3,
  Refused = 4,
  NoAnswer = 5,
  Disconnected = 6,
  Malformed = 7,
  Internal = 9,
  Busy = 11
};

class TheStateCommand : public IntegrationTest {};
class TheRunCommand : public IntegrationTest {
protected:
  // What the application gets as parameters when the command is given these arguments.
  std::string paramsFor(const std::vector<std::string> &arguments) {
    TestApplication application(runtime);
    application.setAction("play");
    application.answerAtOnce("playing");
    std::vector<std::string> command{"run", application.id(), "play"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(runAssistant(command).status, Answered);
    return application.awaitRequest().actionParams;
  }
};
class TheAssistantCommand : public IntegrationTest {};

TEST_F(TheStateCommand, PrintsTheStateAndNothingElse) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("{\"playing\":true}");

  const Outcome outcome = runAssistant({"state", application.id()});

  EXPECT_EQ(outcome.status, Answered);
  EXPECT_EQ(outcome.out, "{\"playing\":true}\n");
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(TheStateCommand, PrintsWhyThereIsNoState) {
  TestApplication application(runtime);

  const Outcome outcome = runAssistant({"state", application.id()});

  EXPECT_EQ(outcome.status, FailureResponse);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err,
              AllOf(StartsWith("norix-assistant: 'org.example.test': App state request "
                               "callback not registered\n"),
                    HasSubstr("norix_set_app_state_request_cb()")));
}

TEST_F(TheRunCommand, PrintsTheResultAndNothingElse) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");

  const Outcome outcome = runAssistant({"run", application.id(), "play"});

  EXPECT_EQ(outcome.status, Answered);
  EXPECT_EQ(outcome.out, "playing\n");
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(TheRunCommand, PrintsWhyThereIsNoResult) {
  TestApplication application(runtime);

  const Outcome outcome = runAssistant({"run", application.id(), "play"});

  EXPECT_EQ(outcome.status, FailureResponse);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(StartsWith("norix-assistant: 'org.example.test': Action Execution "
                                            "callback not registered: 'play'\n"),
                                 HasSubstr("norix_set_action_execution_cb(\"play\"")));
}

TEST_F(TheRunCommand, SendsTheTypeGiven) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");

  runAssistant({"run", application.id(), "play", "--type", "music"});

  EXPECT_EQ(application.awaitRequest().actionType, "music");
}

TEST_F(TheRunCommand, SendsAnEmptyObjectWithoutParameters) {
  EXPECT_EQ(paramsFor({}), "{}");
}

TEST_F(TheRunCommand, SendsPairsAsOneObjectInTheirOrder) {
  EXPECT_EQ(paramsFor({"title=Rain on Tin", "artist=b=c", "empty="}),
            R"({"title":"Rain on Tin","artist":"b=c","empty":""})");
}

TEST_F(TheRunCommand, SendsNumbersAndLiteralsAsTheyStand) {
  EXPECT_EQ(paramsFor({"n=7", "f=1.50", "big=12345678901234567890123", "t=true", "z=null"}),
            R"({"n":7,"f":1.50,"big":12345678901234567890123,"t":true,"z":null})");
}

TEST_F(TheRunCommand, SendsWhateverElseLooksLikeJsonAsAString) {
  EXPECT_EQ(paramsFor({"a=[1]", "o={}", "q=\"x\"", "id=007", "word=True"}),
            R"({"a":"[1]","o":"{}","q":"\"x\"","id":"007","word":"True"})");
}

TEST_F(TheRunCommand, SendsParamsVerbatim) {
  EXPECT_EQ(paramsFor({"--params", "any text, no JSON"}), "any text, no JSON");
}

TEST_F(TheAssistantCommand, SaysHowToStartAnApplicationThatIsNotRunning) {
  const Outcome outcome = runAssistant({"state", "org.example.absent"});

  EXPECT_EQ(outcome.status, CannotConnect);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(StartsWith("norix-assistant: 'org.example.absent': "),
                                 HasSubstr("norix-assistant launch")));
}

TEST_F(TheAssistantCommand, NeedsNeitherAHomeNorARuntimeFolder) {
  unsetenv("XDG_RUNTIME_DIR");

  const Outcome outcome =
      runAssistant({"state", "org.example.absent"}, {{"HOME", "/proc/no/home"}});

  EXPECT_EQ(outcome.status, CannotConnect) << outcome.err;
}

TEST_F(TheAssistantCommand, SaysWhereTheAllowListIsThatRefusesIt) {
  TestApplication::Options options;
  options.allowList = runtime.write("allow_list.dat", "com.example.other\n");
  const TestApplication application = TestApplication::initialised(runtime, options);

  const Outcome outcome = runAssistant({"state", application.id()});

  EXPECT_EQ(outcome.status, Refused);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("com.valtren.tizen.norix"),
                                 HasSubstr("/usr/share/norix/allow_list.dat")));
}

TEST_F(TheAssistantCommand, SendsAsTheIdGiven) {
  TestApplication::Options options;
  options.allowList = runtime.write("allow_list.dat", "com.example.other\n");
  TestApplication application = TestApplication::initialised(runtime, options);
  application.setState();
  application.answerAtOnce("well");

  const Outcome outcome = runAssistant({"state", application.id(), "--id", "com.example.other"});

  EXPECT_EQ(outcome.out, "well\n");
}

TEST_F(TheAssistantCommand, GivesUpAtItsDeadline) {
  TestApplication application(runtime);
  application.setState();

  const Outcome outcome = runAssistant({"state", application.id(), "--deadline", "0.2"});

  EXPECT_EQ(outcome.status, NoAnswer);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, HasSubstr("no answer within 0.2 seconds"));
}

TEST_F(TheAssistantCommand, GivesUpAtItsDeadlineWhenTheApplicationIsStopped) {
  TestApplication application(runtime);
  application.process().signal(SIGSTOP);

  const Outcome outcome = runAssistant({"state", application.id(), "--deadline", "0.2"});

  EXPECT_EQ(outcome.status, Busy);
  EXPECT_THAT(outcome.err, HasSubstr("no connection within 0.2 seconds"));
}

TEST_F(TheAssistantCommand, NoticesThatTheApplicationWasKilled) {
  TestApplication application(runtime);
  application.setState();
  Process assistant = startAssistant({"state", application.id()});
  application.awaitRequest();

  application.process().signal(SIGKILL);
  const Outcome outcome = finish(std::move(assistant));

  EXPECT_EQ(outcome.status, Disconnected);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, HasSubstr("the connection ended"));
}

TEST_F(TheAssistantCommand, NoticesThatTheApplicationDeinitialised) {
  TestApplication application(runtime);
  application.setState();
  Process assistant = startAssistant({"state", application.id()});
  application.awaitRequest();

  application.deinitialize();

  EXPECT_EQ(finish(std::move(assistant)).status, Disconnected);
}

TEST_F(TheAssistantCommand, SaysWhatIsWrongWithAMalformedAnswer) {
  Process hostile({HOSTILE_APPLICATION, "empty-bundle"}, {{"AUL_APPID", "org.example.hostile"}});
  hostile.readLine();

  const Outcome outcome = runAssistant({"state", "org.example.hostile"});

  EXPECT_EQ(outcome.status, Malformed);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, HasSubstr("malformed response: no key 'status_code'"));
}

TEST_F(TheAssistantCommand, FailsWhenItsAnswerCannotBeWritten) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("well");

  const Outcome outcome = finish(Process({"/bin/sh", "-c", "exec \"$0\" state \"$1\" >/dev/full",
                                          ASSISTANT_COMMAND, application.id()}));

  EXPECT_EQ(outcome.status, Internal);
  EXPECT_THAT(outcome.err, HasSubstr("cannot write the answer"));
}

TEST_F(TheAssistantCommand, ShowsThePlatformsLogWhenAskedTo) {
  runtime.write("run/rpc-port", "a file where the platform needs a folder");

  EXPECT_THAT(runAssistant({"state", "app"}).err, Not(HasSubstr("E/RPC_PORT")));
  EXPECT_THAT(runAssistant({"state", "app"}, {{"DLOG_FILTER", "*:W"}}).err,
              HasSubstr("E/RPC_PORT"));
}

TEST_F(TheAssistantCommand, PrintsItsHelp) {
  const Outcome outcome = runAssistant({"--help"});

  EXPECT_EQ(outcome.status, Answered);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Examples:"), HasSubstr("Exit status:")));
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(TheAssistantCommand, PrintsItsVersion) {
  const Outcome outcome = runAssistant({"--version"});

  EXPECT_EQ(outcome.status, Answered);
  EXPECT_EQ(outcome.out, "norix-assistant " PROJECT_VERSION "\n");
}

struct Misuse {
  const char *name;
  std::vector<std::string> arguments;
  const char *message;
};

std::ostream &operator<<(std::ostream &out, const Misuse &misuse) {
  return out << misuse.name;
}

class AWrongCommandLine : public IntegrationTest, public testing::WithParamInterface<Misuse> {};

INSTANTIATE_TEST_SUITE_P(
    , AWrongCommandLine,
    testing::Values(
        Misuse{"WithoutCommand", {}, "give a command: launch, "},
        Misuse{"WithAnUnknownCommand", {"sing"}, "give a command"},
        Misuse{"WithoutApplication", {"state"}, "APP is required"},
        Misuse{"WithAFolderForApplication", {"state", "build/light"}, "build/light"},
        Misuse{"WithTheFolderAboveForApplication", {"state", ".."}, "'..'"},
        Misuse{"WithThisFolderForId", {"state", "app", "--id", "."}, "'.'"},
        Misuse{"WithALineBreakInTheId", {"state", "app", "--id", "a\nb"}, "'a\\nb'"},
        Misuse{"WithAnIdTooLong", {"state", std::string(256, 'a')}, "no app id"},
        Misuse{"WithoutAction", {"run", "app"}, "ACTION is required"},
        Misuse{"WithTooMuch", {"state", "app", "more"}, "more"},
        Misuse{"WithAnUnknownOption", {"state", "app", "--loud"}, "--loud"},
        Misuse{"WithoutDeadline", {"state", "app", "--deadline"}, "--deadline"},
        Misuse{"WithADeadlineOfNothing", {"state", "app", "--deadline", "0"}, "0"},
        Misuse{"WithANegativeDeadline", {"state", "app", "--deadline", "-1"}, "-1"},
        Misuse{"WithATextForDeadline", {"state", "app", "--deadline", "soon"}, "soon"},
        Misuse{"WithAnEmptyId", {"state", "app", "--id", ""}, "--id"},
        Misuse{"WithAPathForId", {"state", "app", "--id", "../x"}, "../x"},
        Misuse{"WithADeadlineThatIsNoNumber", {"state", "app", "--deadline", "nan"}, "'nan'"},
        Misuse{"WithAnEndlessTimeout", {"state", "app", "--timeout", "inf"}, "'inf'"},
        Misuse{"WithADotForId", {"state", "app", "--id", "."}, "'.' is no app id"},
        Misuse{"WithTwoDotsForId", {"state", "app", "--id", ".."}, "'..' is no app id"},
        Misuse{"WithAControlCharacterInItsId", {"state", "app", "--id", "a\x1b[2J"}, "'a\\e[2J'"},
        Misuse{"WithAnIdThatIsTooLong",
               {"state", "app", "--id", std::string(256, 'x')},
               "longer than 255 bytes"},
        Misuse{"WithDotsForApplication", {"state", ".."}, "'..' is no app id"},
        Misuse{"WithoutKeyToSet", {"run", "app", "play", "--set", "x"}, "give --set KEY=VALUE"},
        Misuse{"WithAKeyThatIsThere",
               {"run", "app", "play", "--set", "actionId=x"},
               "'actionId' is in the bundle already"},
        Misuse{"WithWhatIsNoJson", {"run", "app", "play", "a:=nope"}, "is not JSON"},
        Misuse{"WithAFileThatIsNotThere",
               {"run", "app", "play", "--params", "@/nowhere"},
               "cannot open '/nowhere'"},
        Misuse{"WithAnUnknownShell", {"completion", "csh"}, "csh"},
        Misuse{"WithNoPair", {"run", "app", "play", "loud"}, "'loud' is no parameter"},
        Misuse{"WithAPairWithoutKey", {"run", "app", "play", "=1"}, "'=1'"},
        Misuse{"WithAKeyTwice", {"run", "app", "play", "a=1", "a=2"}, "'a' is given"},
        Misuse{
            "WithParametersInTwoWays", {"run", "app", "play", "a=1", "--params", "{}"}, "not both"},
        Misuse{"WithAParameterThatIsNoText", {"run", "app", "play", "a=\xff"}, "not UTF-8"}));

TEST_P(AWrongCommandLine, IsRefusedWithAHint) {
  const Outcome outcome = runAssistant(GetParam().arguments);

  EXPECT_EQ(outcome.status, WrongUsage);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(StartsWith("norix-assistant: "), HasSubstr(GetParam().message)));
}

} // namespace
} // namespace integration
