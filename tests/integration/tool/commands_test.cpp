// SPDX-License-Identifier: Apache-2.0
//
// run's ways in, list, doctor, and what the tool works without.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"
#include "integration/tool/startMusic.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace integration {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class TheTool : public IntegrationTest {
protected:
  std::string paramsFor(const std::vector<std::string> &arguments) {
    TestApplication application(runtime);
    application.setAction("play");
    application.answerAtOnce("playing");
    std::vector<std::string> command{"run", application.id(), "play"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(runAssistant(command).status, 0);
    return application.awaitRequest().actionParams;
  }

  // The folder of an application that nobody started, with these declarations.
  fs::path installWith(const std::string &declarations) const {
    runtime.install("org.example.idle", "1.0-beta");
    fs::path folder = runtime.write("apps/org.example.idle/app", "#!/bin/sh\n").parent_path();
    fs::permissions(folder / "app", fs::perms::owner_all);
    fs::create_directories(folder / "shared/res");
    runtime.write("apps/org.example.idle/shared/res/norix-actions.json", declarations);
    return folder;
  }
};

TEST_F(TheTool, SendsJsonAsItIs) {
  EXPECT_EQ(paramsFor({"list:=[1, 2]", "object:={\"a\":null}", "text=a:=b"}),
            R"({"list":[1, 2],"object":{"a":null},"text":"a:=b"})");
}

TEST_F(TheTool, SendsFurtherKeys) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");

  const Outcome outcome = runAssistant(
      {"run", application.id(), "play", "--set", "actionType=voice", "--set", "mood=calm=ly"});
  const Outcome further =
      runAssistant({"run", application.id(), "play", "--set", "mood=calm=ly", "--set", "empty="});

  EXPECT_EQ(outcome.status, 2) << outcome.err;
  EXPECT_EQ(further.status, 0) << further.err;
  const auto texts = application.awaitRequest().texts;
  EXPECT_EQ(texts.at("mood"), "calm=ly");
  EXPECT_EQ(texts.at("empty"), "");
}

TEST_F(TheTool, NeverCallsAnApplicationBusyThatIsStarting) {
  constexpr int kStarts = 10;
  for (int start = 0; start < kStarts; ++start) {
    Process music({std::string(MUSIC_EXAMPLE) + "/bin/music"}, {{"AUL_APPID", kMusic}});
    Outcome outcome;
    do {
      outcome = runAssistant({"state", kMusic});
    } while (outcome.status == 3);

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    music.signal(SIGTERM);
    music.wait();
  }
}

TEST_F(TheTool, SendsParametersOfAFile) {
  const fs::path file = runtime.write("params", "from a file\n");

  EXPECT_EQ(paramsFor({"--params", "@" + file.string()}), "from a file\n");
}

TEST_F(TheTool, SendsParametersOfItsInput) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");
  Process assistant = startAssistant({"run", application.id(), "play", "--params", "-"});
  assistant.writeLine("from the input");

  EXPECT_EQ(assistant.finish().status, 0);
  EXPECT_EQ(application.awaitRequest().actionParams, "from the input\n");
}

TEST_F(TheTool, WaitsUntilTheApplicationListens) {
  Process assistant = startAssistant({"state", kMusic, "--wait", "20"});

  const Process music({std::string(MUSIC_EXAMPLE) + "/bin/music"}, {{"AUL_APPID", kMusic}});

  EXPECT_EQ(assistant.finish().status, 0);
}

TEST_F(TheTool, WaitsNoLongerThanItIsTold) {
  const Outcome outcome = runAssistant({"state", kMusic, "--wait", "0.1"});

  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.err, HasSubstr("nobody listens"));
}

TEST_F(TheTool, WarnsOfParametersThatAreNotDeclaredAndSendsThem) {
  const Process music = startMusic();

  const Outcome outcome = runAssistant({"run", kMusic, "musicVolume", "volume=400"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("not 400"));
  EXPECT_EQ(outcome.err, "norix-assistant: warning: parameters: /volume: expected a number of at "
                         "most 100, found 400\n");
}

TEST_F(TheTool, NamesTheActionThatWasProbablyMeant) {
  const Process music = startMusic();

  EXPECT_THAT(runAssistant({"run", kMusic, "musicPlai"}).err,
              HasSubstr("'musicPlai' is not declared, did you mean 'musicPlay'?"));
}

TEST_F(TheTool, ListsWhoListensWithPidAndTime) {
  const Process music = startMusic();

  const Outcome outcome = runAssistant({"list"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, IsEmpty());
  EXPECT_THAT(outcome.out, MatchesRegex("org.example.music  pid " + std::to_string(music.pid())
                                        + "  since [0-9-]+T[0-9:]+[+-][0-9]+\n"));
}

TEST_F(TheTool, ListsAnApplicationThatIsStopped) {
  TestApplication application(runtime);
  application.process().stop();

  EXPECT_THAT(runAssistant({"list"}).out, StartsWith(application.id()));
}

TEST_F(TheTool, ListsNoApplicationThatHasEnded) {
  {
    TestApplication application(runtime);
    application.process().signal(9);
    application.process().wait();
  }

  const Outcome outcome = runAssistant({"list"});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, HasSubstr("no application of this user listens"));
}

TEST_F(TheTool, ListsDeclaredActions) {
  const Process music = startMusic();

  EXPECT_THAT(runAssistant({"list", "--actions"}).out,
              HasSubstr("\n    musicVolume volume=integer    Set the volume\n"));
  const json listed = json::parse(runAssistant({"list", "--actions", "--json"}).out);
  EXPECT_EQ(listed["applications"][0]["pid"], music.pid());
  EXPECT_EQ(listed["applications"][0]["declared"][0]["id"], "musicNext");
}

TEST_F(TheTool, ShowsWhereDeclarationsAndRegistrationsDiffer) {
  const fs::path music = runtime.write("apps/marker", "").parent_path() / "music";
  fs::copy(MUSIC_EXAMPLE, music, fs::copy_options::recursive);
  runtime.write("apps/music/shared/res/norix-actions.json",
                R"({"version":1,"actions":[{"id":"musicPlay","title":"P","description":"P"},
                {"id":"musicJump","title":"J","description":"J"}]})");
  ASSERT_EQ(runAssistant({"launch", music.string(), "--wait"}).status, 0);

  const json listed = json::parse(runAssistant({"list", "--actions", "--json"}).out);
  const Outcome doctor = runAssistant({"doctor", kMusic});
  const Outcome completed = runAssistant({"complete", "--", "run", kMusic, "musicV"});
  runAssistant({"launch", "--stop", kMusic});

  const json &entry = listed["applications"][0];
  EXPECT_EQ(entry["notRegistered"], json::array({"musicJump"}));
  EXPECT_EQ(entry["notDeclared"],
            json::array({"musicNext", "musicPause", "musicSing", "musicVolume"}));
  EXPECT_EQ(doctor.status, 0);
  EXPECT_THAT(doctor.out,
              HasSubstr("warning: the action 'musicJump' is declared and not registered"));
  EXPECT_EQ(completed.out, "musicVolume\tregistered\n");
}

TEST_F(TheTool, FindsNothingWrongWithAnExample) {
  const Outcome outcome = runAssistant({"doctor", MUSIC_EXAMPLE});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "nothing wrong found\n");
}

TEST_F(TheTool, FindsWhereDeclarationsAreWrong) {
  const fs::path folder = installWith("{\"version\": 1,\n \"action\": [],\n \"actions\": []}");

  const Outcome outcome = runAssistant({"doctor", "org.example.idle"});

  EXPECT_EQ(outcome.status, 10);
  EXPECT_THAT(outcome.out, HasSubstr("error: " + (folder / "shared/res/norix-actions.json").string()
                                     + ":2:2: unknown keyword 'action'"));
  EXPECT_THAT(outcome.err, HasSubstr("'org.example.idle': 1 mistake found"));
}

TEST_F(TheTool, FindsWhatIsWrongWithManifestAndAllowList) {
  const fs::path folder = installWith("{\"version\": 1, \"actions\": []}");
  runtime.install("org.example.idle", std::nullopt);
  const fs::path list = runtime.write("allow_list.dat", "");

  const Outcome outcome =
      runAssistant({"doctor", folder.string(), "--allow-list", list.string(), "--json"});

  const json findings = json::parse(outcome.out)["findings"];
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0]["finding"], "no-metadata-key");
  EXPECT_EQ(findings[1]["finding"], "allow-list-empty");
}

TEST_F(TheTool, FindsThatThereIsNoApplication) {
  const Outcome outcome = runAssistant({"doctor", "/nowhere"});

  EXPECT_EQ(outcome.status, 10);
  EXPECT_THAT(outcome.out, HasSubstr("error: "));
}

// A container's user: no name, no home folder, nothing that is its own but a temporary folder.
TEST_F(TheTool, WorksForAUserThatNobodyKnows) {
  constexpr uid_t kUser = 54321;
  const std::string user = std::to_string(kUser);
  const support::TemporaryFolder temporary;
  const auto started = [&](const std::vector<std::string> &command) {
    std::vector<std::string> whole{
        "/usr/bin/env", "-u", "XDG_RUNTIME_DIR", "HOME=/", "/usr/bin/setpriv",
        "--reuid",      user, "--regid",         user,     "--clear-groups"};
    whole.insert(whole.end(), command.begin(), command.end());
    return Process(whole, {{"AUL_APPID", kMusic}, {"TMPDIR", temporary.path()}});
  };
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can become another user";
  }
  if (started({"/usr/bin/test", "-x", ASSISTANT_COMMAND}).wait() != 0) {
    GTEST_SKIP() << "other users cannot reach " << ASSISTANT_COMMAND;
  }
  ASSERT_EQ(chown(temporary.path().c_str(), kUser, kUser), 0);
  Process music = started({std::string(MUSIC_EXAMPLE) + "/bin/music"});

  const Outcome outcome = started({ASSISTANT_COMMAND, "state", kMusic, "--wait", "20"}).finish();
  for (const std::vector<std::string> &look : {std::vector<std::string>{"doctor", MUSIC_EXAMPLE},
                                               {"list", "--actions"},
                                               {"monitor", kMusic},
                                               {"launch", "--stop", kMusic}}) {
    std::vector<std::string> command{ASSISTANT_COMMAND};
    command.insert(command.end(), look.begin(), look.end());
    started(command).finish();
  }
  music.signal(SIGTERM);

  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"volume\""));
  EXPECT_EQ(music.wait(), 0) << music.errors();
}

struct Surroundings {
  const char *name;
  std::vector<std::string> prefix; // of env(1)
};

void PrintTo(const Surroundings &tried, std::ostream *out) {
  *out << tried.name;
}

class Anywhere : public TheTool, public testing::WithParamInterface<Surroundings> {};

INSTANTIATE_TEST_SUITE_P(, Anywhere,
                         testing::Values(Surroundings{"WithoutHomeAndRuntimeFolder",
                                                      {"-u", "HOME", "-u", "XDG_RUNTIME_DIR"}},
                                         Surroundings{"WithAHomeThatCannotBeWritten",
                                                      {"-u", "XDG_RUNTIME_DIR", "HOME=/proc"}},
                                         Surroundings{"WithAHomeThatIsNotThere",
                                                      {"-u", "XDG_RUNTIME_DIR", "HOME=/nowhere"}}),
                         [](const auto &tried) { return tried.param.name; });

TEST_P(Anywhere, TheToolReachesAnApplicationAndLeavesNothing) {
  const fs::path temporary = runtime.write("tmp-marker", "").parent_path() / "tmp";
  fs::create_directory(temporary);
  const auto started = [&](const std::vector<std::string> &command) {
    std::vector<std::string> whole{"/usr/bin/env"};
    whole.insert(whole.end(), GetParam().prefix.begin(), GetParam().prefix.end());
    whole.push_back("AUL_APPID=" + std::string(kMusic));
    whole.push_back("TMPDIR=" + temporary.string());
    whole.insert(whole.end(), command.begin(), command.end());
    return Process(whole);
  };
  Process music = started({std::string(MUSIC_EXAMPLE) + "/bin/music"});

  const Outcome outcome = started({ASSISTANT_COMMAND, "state", kMusic, "--wait", "20"}).finish();
  music.signal(SIGTERM);
  music.wait();

  EXPECT_EQ(outcome.status, 0) << outcome.err;
  // What else is there is the application's.
  for (const auto &entry : fs::recursive_directory_iterator(temporary)) {
    EXPECT_THAT(entry.path().filename().string(), Not(HasSubstr("turn")));
    EXPECT_THAT(entry.path().filename().string(), Not(HasSubstr("norix-assistant")));
  }
}

} // namespace
} // namespace integration
