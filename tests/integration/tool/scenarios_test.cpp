// SPDX-License-Identifier: Apache-2.0
//
// norix-assistant test from outside, with the music example.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/tool/startMusic.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char *kFailingScenario =
    SOURCE_FOLDER "/examples/music/scenarios-that-fail/volume.yaml";
constexpr int kRefused = 15;

class TheTestCommand : public IntegrationTest {
protected:
  // Plays a scenario with the example.
  Outcome play(const std::string &scenario, std::vector<std::string> options = {}) const {
    options.insert(options.begin(),
                   {"test", runtime.write("scenario.yaml", scenario), "--app", MUSIC_EXAMPLE});
    return runAssistant(options);
  }
  static Outcome playFolder(const std::string &folder, std::vector<std::string> options) {
    options.insert(options.begin(), {"test", folder, "--app", MUSIC_EXAMPLE});
    return runAssistant(options);
  }
  // The example behind a program that starts it the first time only.
  std::string installUnsteady() const {
    namespace fs = std::filesystem;
    const fs::path folder =
        runtime
            .write("unsteady/bin/music",
                   "#!/bin/sh\nmkdir \"$0.started\" && exec " MUSIC_EXAMPLE "/bin/music\n")
            .parent_path()
            .parent_path();
    fs::permissions(folder / "bin/music", fs::perms::owner_all);
    fs::copy_file(fs::path(MUSIC_EXAMPLE) / "tizen-manifest.xml", folder / "tizen-manifest.xml");
    return folder;
  }
  json reportOf(const std::string &scenario) const {
    return json::parse(play(scenario, {"--json"}).out);
  }
};

TEST_F(TheTestCommand, PassesTheScenariosOfTheExample) {
  const Outcome outcome = playFolder(MUSIC_SCENARIOS, {"--jobs", "4"});

  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_THAT(outcome.out, Not(HasSubstr("✗")));
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(TheTestCommand, ShowsADifferenceAndTheTimeLineOfTheRequest) {
  const Outcome outcome = play("steps:\n"
                               "- run: musicVolume\n"
                               "  params: {volume: 25}\n"
                               "  expect: {text: The volume is 26}\n");

  EXPECT_EQ(outcome.status, kFailed);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("-The volume is 26"), HasSubstr("+The volume is 25"),
                                 HasSubstr("scenario.yaml:2"),
                                 HasSubstr("callback of musicVolume was entered")));
  EXPECT_THAT(outcome.err, HasSubstr("1 of 1 scenarios failed"));
}

// The lines of the page's report, in order; "…" stands for anything.
TEST_F(TheTestCommand, FailsTheScenarioThatIsWrittenToAsThePageSays) {
  const std::string page = support::contentOf(SOURCE_FOLDER "/docs/testing.md");
  const std::size_t begin = page.find("✗ The volume is low");
  std::istringstream lines(page.substr(begin, page.find("```", begin) - begin));

  const Outcome outcome = runAssistant({"test", kFailingScenario, "--app", MUSIC_EXAMPLE});

  EXPECT_EQ(outcome.status, kFailed);
  std::size_t at = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::string before = line.substr(0, std::min(line.find("…"), line.find("examples/")));
    at = outcome.out.find(before, at);
    ASSERT_NE(at, std::string::npos) << line << "\nis not in\n" << outcome.out;
  }
}

TEST_F(TheTestCommand, PlaysAgainWhenAFileChangesUntilItIsInterrupted) {
  const std::string name = "watched/a.yaml";
  const std::string file = runtime.write(name, "name: First\nsteps: [{state: }]");
  const std::string folder = std::filesystem::path(file).parent_path();
  Process watching = startAssistant({"test", "--watch", folder, "--app", MUSIC_EXAMPLE});
  const auto awaitLineWith = [&watching](const std::string &part) {
    while (watching.readLine().find(part) == std::string::npos) {
    }
  };

  awaitLineWith("✓ First");
  runtime.write(name, "name: Second\nstepz: [{state: }]");
  awaitLineWith("did you mean 'steps'?");
  runtime.write("watched/b.yaml", "name: Another\nsteps: [{state: }]");
  runtime.write(name, "name: Third\nsteps: [{state: }]");
  awaitLineWith("✓ Third");
  awaitLineWith("✓ Another");
  watching.signal(SIGINT);

  EXPECT_EQ(watching.wait(), 128 + SIGINT);
}

TEST_F(TheTestCommand, PlaysNothingWhenAFileIsRefused) {
  runtime.write("folder/bad.yaml", "steps: [{runs: a}]");
  const std::string good = runtime.write("folder/good.yaml", "steps: [{state: }]");

  const Outcome outcome = playFolder(std::filesystem::path(good).parent_path(), {"--tap"});

  EXPECT_EQ(outcome.status, kRefused);
  EXPECT_THAT(outcome.err, HasSubstr("bad.yaml:1:9: nothing says what this step does"));
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("    not ok 1 - read the file\n"),
                                 HasSubstr("    ok 2 - 1 state # SKIP another file was refused")));
}

TEST_F(TheTestCommand, SaysThatAnApplicationCannotBeStarted) {
  const std::string file = runtime.write("scenario.yaml", "steps: [{state: }, {run: a}]");

  const Outcome outcome = runAssistant({"test", file, "--app", runtime.write("x", ""), "--json"});

  EXPECT_EQ(outcome.status, kCannotLaunch);
  const json report = json::parse(outcome.out);
  EXPECT_EQ(report["outcome"], "error");
  // As many steps as ever.
  EXPECT_EQ(report["cases"][0]["steps"].size(), 4U);
}

TEST_F(TheTestCommand, SaysWhatIsWrongWithTheSelection) {
  EXPECT_EQ(play("steps: [{state: }]", {"--filter", "nothing"}).status, kWrongUsage);
  EXPECT_EQ(play("steps: [{state: }]", {"--shard", "2/1"}).status, kWrongUsage);
  EXPECT_EQ(runAssistant({"test", "/no/such/file"}).status, kWrongUsage);
}

TEST_F(TheTestCommand, KeepsCapturedValuesForLaterSteps) {
  EXPECT_EQ(play("steps:\n"
                 "- run: musicVolume\n"
                 "  params: {volume: '${start}'}\n"
                 "- state:\n"
                 "  capture: {volume: /volume}\n"
                 "- run: musicVolume\n"
                 "  params: {volume: '${volume}'}\n"
                 "  expect: {text: 'The volume is ${volume}'}\n",
                 {"--set", "start=7"})
                .status,
            0);
}

TEST_F(TheTestCommand, AsksAgainUntilWhatIsExpectedComes) {
  const json report = reportOf("steps:\n"
                               "- run: musicNext\n"
                               "  as: next\n"
                               "- await: next\n"
                               "- state:\n"
                               "  retry: {every: 10 ms, within: 300 ms}\n"
                               "  expect: {json: {/title: Nothing}}\n");

  const json &step = report["cases"][0]["steps"][3];
  EXPECT_EQ(step["outcome"], "failed");
  EXPECT_GT(std::stoi(step["properties"]["attempts"].get<std::string>()), 1);
}

TEST_F(TheTestCommand, KnowsWhichRequestOfABurstIsAnswered) {
  EXPECT_EQ(play("senders: {phone: {id: com.phone}, watch: {id: com.watch}}\n"
                 "steps:\n"
                 "- burst:\n"
                 "  - {run: musicNext, sender: phone, expect: {outcome: superseded}}\n"
                 "  - {run: musicNext, sender: watch, expect: {outcome: superseded}}\n"
                 "  - {run: musicPause, sender: phone}\n"
                 "  - {state: , sender: watch}\n")
                .status,
            0);
}

TEST_F(TheTestCommand, StopsKillsAndRestartsTheApplication) {
  EXPECT_EQ(play("timeout: 20 s\n"
                 "steps:\n"
                 "- state:\n"
                 "- stop: application\n"
                 "- state:\n"
                 "  as: pending\n"
                 "- continue: application\n"
                 "- await: pending\n"
                 "- kill: application\n"
                 "- state:\n"
                 "  expect: {outcome: nobody-listens}\n"
                 "- restart: application\n"
                 "- state:\n")
                .status,
            0);
}

TEST_F(TheTestCommand, FindsAStoppedApplicationBusy) {
  EXPECT_EQ(play("timeout: 100 ms\n"
                 "steps:\n"
                 "- stop: application\n"
                 "- state:\n"
                 "  expect: {outcome: busy}\n")
                .status,
            0);
}

TEST_F(TheTestCommand, StopsKillsAndDisconnectsASender) {
  EXPECT_EQ(play("senders: {phone: {id: com.phone}, watch: {id: com.watch, registers: false}}\n"
                 "application: {completion-timeout: 200 ms}\n"
                 "steps:\n"
                 "- run: musicNext\n"
                 "  as: lost\n"
                 "- kill: phone\n"
                 "- await: lost\n"
                 "  expect: {outcome: connection-lost}\n"
                 "- state:\n"
                 "- disconnect: phone\n"
                 "- state:\n"
                 "- stop: phone\n"
                 "- continue: phone\n"
                 "- state:\n"
                 // Registers late, and is answered then.
                 "- connect: watch\n"
                 "- register: watch\n"
                 "- state:\n"
                 "  sender: watch\n"
                 "- unregister: watch\n"
                 "- state:\n"
                 "  sender: watch\n"
                 "  expect: {outcome: no-answer}\n")
                .status,
            0);
}

TEST_F(TheTestCommand, RefusesToSendAsASenderThatIsStopped) {
  const Outcome outcome = play("steps: [{stop: assistant}, {state: }]");

  EXPECT_EQ(outcome.status, kFailed);
  EXPECT_THAT(outcome.out, HasSubstr("is stopped and cannot do anything"));
}

TEST_F(TheTestCommand, FailsByAFindingThatWasNotExpected) {
  const std::string scenario = "application: {completion-timeout: 100 ms}\n"
                               "steps:\n"
                               "- run: musicSing\n"
                               "  expect: {outcome: action-timed-out}\n";
  const Outcome outcome = play(scenario);

  EXPECT_EQ(outcome.status, kFailed);
  EXPECT_THAT(outcome.out, HasSubstr("finding never-answered in '1 run musicSing'"));
  EXPECT_EQ(play("findings: never-answered\n" + scenario).status, 0);
  EXPECT_EQ(play("findings: any\n" + scenario).status, 0);
}

TEST_F(TheTestCommand, FailsByAFindingThatDidNotCome) {
  EXPECT_THAT(play("findings: loop-held\nsteps: [{state: }]").out,
              HasSubstr("the finding 'loop-held' did not come"));
}

TEST_F(TheTestCommand, FailsByALogLineThatDidNotCome) {
  EXPECT_THAT(play("steps: [{state: , expect: {log: nothing of this}}]").out,
              HasSubstr("logged no line with 'nothing of this'"));
}

TEST_F(TheTestCommand, UsesAnApplicationThatRuns) {
  const Process music = startMusic();
  const std::string file = runtime.write("scenario.yaml", "application: {running: "
                                                          "org.example.music}\n"
                                                          "steps: [{state: }]");

  const Outcome outcome = runAssistant({"test", file, "--tap"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("ok 3 - findings # SKIP the application was not started"));
}

TEST_F(TheTestCommand, RepeatsAndTellsFlakyFromBroken) {
  const Outcome broken = play("steps: [{run: nothing}]", {"--repeat", "2", "--jobs", "2"});
  EXPECT_EQ(broken.status, kFailed);
  EXPECT_THAT(broken.err, HasSubstr("scenario.yaml is broken: failed 2 of 2 times"));

  const Outcome flaky = runAssistant({"test", runtime.write("scenario.yaml", "steps: [{state: }]"),
                                      "--app", installUnsteady(), "--repeat", "2"});
  EXPECT_THAT(flaky.err, HasSubstr("scenario.yaml is flaky: failed 1 of 2 times"));
}

TEST_F(TheTestCommand, StartsNoMoreAfterAFailureWhenItBails) {
  runtime.write("folder/a.yaml", "steps: [{run: nothing}]");
  const std::string file = runtime.write("folder/b.yaml", "steps: [{state: }]");

  const Outcome outcome =
      playFolder(std::filesystem::path(file).parent_path(), {"--bail", "--tap"});

  EXPECT_THAT(outcome.out, AllOf(HasSubstr("not ok 1 - a\n"), HasSubstr("ok 2 - b # SKIP\n"),
                                 HasSubstr("# SKIP an earlier scenario failed")));
}

TEST_F(TheTestCommand, ListsWithoutPlaying) {
  const Outcome outcome = playFolder(MUSIC_SCENARIOS, {"--list", "--filter", "volume"});

  EXPECT_EQ(outcome.out, std::string(MUSIC_SCENARIOS)
                             + "/volume.yaml: The volume is set, and kept within its range\n");
}

TEST_F(TheTestCommand, WritesItsReportsIntoFiles) {
  const std::string folder = runtime.write("reports/x", "").parent_path();

  ASSERT_EQ(play("steps: [{state: }]",
                 {"--junit", folder + "/r.xml", "--html", folder + "/r.html", "--tap"})
                .status,
            0);

  EXPECT_THAT(support::contentOf(folder + "/r.xml"), HasSubstr("<testcase name=\"1 state\""));
  EXPECT_THAT(support::contentOf(folder + "/r.html"), HasSubstr("<svg class=\"chart\""));
}

TEST_F(TheTestCommand, LeavesNothingBehind) {
  const support::TemporaryFolder temporary;

  ASSERT_EQ(play("steps: [{state: }]", {}).status, 0);
  const Outcome outcome = runAssistant(
      {"test", runtime.write("a.yaml", "steps: [{run: musicNext, as: a}]"), "--app", MUSIC_EXAMPLE},
      {{"TMPDIR", temporary.path()}});

  EXPECT_EQ(outcome.status, kFailed); // Nobody awaited the answer: a finding.
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

TEST_F(TheTestCommand, EndsAtOnceOnASignalAndTakesEverythingWithIt) {
  const support::TemporaryFolder temporary;
  Process command = startAssistant(
      {"test", runtime.write("a.yaml", "steps: [{wait: 1 min}]"), "--app", MUSIC_EXAMPLE},
      {{"TMPDIR", temporary.path()}});
  while (std::filesystem::is_empty(temporary.path())) {
    std::this_thread::yield();
  }

  command.signal(SIGTERM);

  EXPECT_EQ(command.wait(), 128 + SIGTERM);
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

} // namespace
} // namespace integration
