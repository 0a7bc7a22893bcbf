// SPDX-License-Identifier: Apache-2.0
//
// norix-assistant launch from outside.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"

#include <gmock/gmock.h>

namespace integration {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char *kId = "org.example.script";
constexpr const char *kTellEnvironment = "#!/bin/sh\n"
                                         "echo \"$AUL_APPID\"\n"
                                         "echo \"$NORIX_DESKTOP_APPS\"\n"
                                         "for argument; do echo \"$argument\"; done\n";

class TheLaunchCommand : public IntegrationTest {
protected:
  // The folder of an application whose program, named app, does not exist yet.
  std::filesystem::path install() const {
    runtime.install(kId, "1.0");
    return runtime.write(std::string("apps/") + kId + "/marker", "").parent_path();
  }

  void writeProgram(const std::string &path, const std::string &script) const {
    const auto name = std::string("apps/") + kId + "/" + path;
    std::filesystem::permissions(runtime.write(name, script), std::filesystem::perms::owner_all);
  }

  static void expectRefusal(const Outcome &outcome, const std::string &message) {
    EXPECT_EQ(outcome.status, kCannotLaunch);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err,
                AllOf(StartsWith("norix-assistant: cannot launch: "), HasSubstr(message)));
  }
};

TEST_F(TheLaunchCommand, StartsTheProgramInTheFolderWithTheEnvironmentOfAnApplication) {
  const auto folder = install();
  writeProgram("app", kTellEnvironment);

  const Outcome outcome = runAssistant({"launch", folder});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, std::string(kId) + "\n" + folder.parent_path().string() + "\n");
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(TheLaunchCommand, PrefersTheProgramInBin) {
  const auto folder = install();
  std::filesystem::create_directory(folder / "bin");
  writeProgram("app", "#!/bin/sh\necho beside\n");
  writeProgram("bin/app", "#!/bin/sh\necho bin\n");

  EXPECT_EQ(runAssistant({"launch", folder}).out, "bin\n");
}

TEST_F(TheLaunchCommand, FindsAnApplicationByItsId) {
  install();
  writeProgram("app", "#!/bin/sh\necho started\n");

  EXPECT_EQ(runAssistant({"launch", kId}).out, "started\n");
}

TEST_F(TheLaunchCommand, PassesArgumentsOn) {
  const auto folder = install();
  writeProgram("app", kTellEnvironment);

  const Outcome outcome = runAssistant({"launch", folder, "--", "--loud", "two words"});

  EXPECT_THAT(outcome.out, testing::EndsWith("\n--loud\ntwo words\n"));
}

TEST_F(TheLaunchCommand, EndsWithTheStatusOfTheProgram) {
  const auto folder = install();
  writeProgram("app", "#!/bin/sh\nexit 42\n");

  EXPECT_EQ(runAssistant({"launch", folder}).status, 42);
}

TEST_F(TheLaunchCommand, MissesTheManifest) {
  const auto folder = install();
  std::filesystem::remove(folder / "tizen-manifest.xml");

  expectRefusal(runAssistant({"launch", folder}), "no tizen-manifest.xml in '" + folder.string());
}

TEST_F(TheLaunchCommand, MissesTheFolderOfAnId) {
  expectRefusal(runAssistant({"launch", "org.example.absent"}),
                "check the app id and NORIX_DESKTOP_APPS");
}

TEST_F(TheLaunchCommand, NeedsAFolderOfApplicationsForAnId) {
  unsetenv("NORIX_DESKTOP_APPS");

  expectRefusal(runAssistant({"launch", "org.example.absent"}), "set NORIX_DESKTOP_APPS");
}

TEST_F(TheLaunchCommand, MissesTheProgram) {
  expectRefusal(runAssistant({"launch", install()}), "no program 'app'");
}

TEST_F(TheLaunchCommand, SaysWhyTheProgramDoesNotStart) {
  const auto folder = install();
  runtime.write(std::string("apps/") + kId + "/app", "no program");

  expectRefusal(runAssistant({"launch", folder}), "does not start: Permission denied");
}

TEST_F(TheLaunchCommand, SaysWhereTheManifestIsWrong) {
  const auto folder = install();
  runtime.write(std::string("apps/") + kId + "/tizen-manifest.xml", "<manifest><oops");

  expectRefusal(runAssistant({"launch", folder}), "tizen-manifest.xml:1: ");
}

TEST_F(TheLaunchCommand, SaysWhatTheManifestLacks) {
  const auto folder = install();
  runtime.write(std::string("apps/") + kId + "/tizen-manifest.xml",
                "<manifest package=\"org.example.script\"/>");

  expectRefusal(runAssistant({"launch", folder}), "no application is declared");
}

} // namespace
} // namespace integration
