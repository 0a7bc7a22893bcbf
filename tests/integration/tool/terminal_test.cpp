// SPDX-License-Identifier: Apache-2.0
//
// What the tool does on a terminal: completion in the shells that people use, its own shell,
// colours, and the line with the seconds left.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"
#include "integration/tool/Terminal.h"
#include "integration/tool/startMusic.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace integration {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class WithMusic : public IntegrationTest {
private:
  const Process _music = startMusic();
};

struct UserShell {
  const char *name;
  std::vector<std::string> command;
  // Loads the completion; $0 is not known to a shell that is typed into.
  std::string load;
};

void PrintTo(const UserShell &tried, std::ostream *out) {
  *out << tried.name;
}

class AUserShell : public WithMusic, public testing::WithParamInterface<UserShell> {
protected:
  // A shell in which the completion is loaded and the program on the path.
  static std::unique_ptr<Terminal> start() {
    const std::string folder = std::filesystem::path(ASSISTANT_COMMAND).parent_path().string();
    const char *path = std::getenv("PATH");
    auto shell = std::make_unique<Terminal>(
        GetParam().command,
        Process::Environment{{"PATH", folder + ":" + (path == nullptr ? "/usr/bin:/bin" : path)}});
    // The quotes keep the marker from being seen before it is printed.
    shell->type(GetParam().load + "; echo loa''ded\r");
    shell->readUntil("loaded");
    return shell;
  }
};

INSTANTIATE_TEST_SUITE_P(
    , AUserShell,
    testing::Values(
        UserShell{"Bash",
                  {"bash", "--norc", "--noprofile", "-i"},
                  "source <(norix-assistant completion bash)"},
        UserShell{
            "Zsh",
            {"zsh", "-f", "-i"},
            "autoload -Uz compinit; compinit -u -D; source <(norix-assistant completion zsh)"},
        UserShell{
            "Fish", {"fish", "--no-config", "-i"}, "norix-assistant completion fish | source"}),
    [](const auto &tried) { return tried.param.name; });

TEST_P(AUserShell, CompletesACommandAnApplicationAnActionAndAParameter) {
  const auto shell = start();

  shell->type("norix-assistant ru\torg.ex\tmusicVol\tvol\t41\r");

  EXPECT_NO_THROW(shell->readUntil("The volume is 41"));
}

TEST_P(AUserShell, CompletesAnOption) {
  const auto shell = start();

  shell->type("norix-assistant --vers\t\r");

  EXPECT_NO_THROW(shell->readUntil("norix-assistant " PROJECT_VERSION));
}

class TheShell : public WithMusic {};

TEST_F(TheShell, CompletesAndRunsCommands) {
  Terminal shell({ASSISTANT_COMMAND, "shell"});
  shell.readUntil("norix> ");

  shell.type("ru\torg.ex\tmusicVol\tvol\t42\r");

  EXPECT_NO_THROW(shell.readUntil("The volume is 42"));
}

TEST_F(TheShell, ShowsWhatThereIsToChooseFrom) {
  Terminal shell({ASSISTANT_COMMAND, "shell"});
  shell.readUntil("norix> ");

  shell.type("run org.example.music mus\t\t");

  EXPECT_THAT(shell.readUntil("musicSing"), AllOf(HasSubstr("musicPlay"), HasSubstr("Next title")));
}

TEST_F(TheShell, RemembersLinesFromSessionToSession) {
  {
    Terminal first({ASSISTANT_COMMAND, "shell"});
    first.readUntil("norix> ");
    first.type("run org.example.music musicVolume volume=43\r");
    first.readUntil("The volume is 43");
    first.readUntil("norix> ");
    first.type("exit\r");
    first.readAll();
  }
  Terminal second({ASSISTANT_COMMAND, "shell"});
  second.readUntil("norix> ");

  second.type("\x1b[A\x1b[A\r"); // Past the exit.

  EXPECT_NO_THROW(second.readUntil("The volume is 43"));
}

TEST_F(TheShell, OutlivesACommandThatIsInterrupted) {
  Terminal shell({ASSISTANT_COMMAND, "shell"});
  shell.readUntil("norix> ");
  shell.type("run org.example.music musicSing\r");
  shell.readUntil("s left"); // The request is on its way.

  shell.type("\x03");

  shell.readUntil("interrupted");
  shell.type("run org.example.music musicVolume volume=44\r");
  EXPECT_NO_THROW(shell.readUntil("The volume is 44"));
}

TEST_F(TheShell, ReadsCommandsFromAPipeAndEndsAsTheLastOne) {
  Process shell = startAssistant({"shell"});
  shell.writeLine("# a comment");
  shell.writeLine("run org.example.music musicVolume 'volume=45'");
  shell.writeLine("sing");

  const Outcome outcome = shell.finish();

  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "The volume is 45\n");
  EXPECT_THAT(outcome.err, HasSubstr("'sing' is none"));
}

TEST_F(TheShell, RefusesALineWithAnOpenQuote) {
  Process shell = startAssistant({"shell"});
  shell.writeLine("run 'org");

  const Outcome outcome = shell.finish();

  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("a quote is open"));
}

class ATerminal : public WithMusic {};

TEST_F(ATerminal, ShowsTheSecondsLeft) {
  Terminal terminal({ASSISTANT_COMMAND, "run", kMusic, "musicSing", "--timeout", "3"});

  EXPECT_NO_THROW(terminal.readUntil("waiting for 'org.example.music' to answer: 2 s left"));
  EXPECT_THAT(terminal.readAll(), HasSubstr("\r\033[Knorix-assistant: "));
}

TEST_F(ATerminal, ShowsHowFarACertificationIs) {
  Terminal certify({ASSISTANT_COMMAND, "certify", MUSIC_EXAMPLE, "--check", "manifest", "--check",
                    "declarations"});

  EXPECT_NO_THROW(certify.readUntil("check 1 of 2, manifest"));
  EXPECT_THAT(certify.readUntil(" folder "),
              AllOf(HasSubstr("check 2 of 2, declarations: some "), HasSubstr(" s left\r\x1b[K")));
}

TEST_F(ATerminal, ShowsColours) {
  EXPECT_THAT(Terminal({ASSISTANT_COMMAND, "doctor", MUSIC_EXAMPLE}).readAll(),
              HasSubstr("\033[32mnothing wrong found\033[0m"));
}

TEST_F(ATerminal, ShowsNoneWithNoColor) {
  EXPECT_THAT(Terminal({ASSISTANT_COMMAND, "doctor", MUSIC_EXAMPLE}, {{"NO_COLOR", "1"}}).readAll(),
              Not(HasSubstr("\033")));
}

TEST_F(ATerminal, ShowsControlCharactersOfAnAnswer) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("\x1b]0;title\x07");

  EXPECT_EQ(Terminal({ASSISTANT_COMMAND, "state", application.id()}).readAll(),
            "\\e]0;title\\x07\r\n");
}

} // namespace
} // namespace integration
