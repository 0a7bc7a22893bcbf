// SPDX-License-Identifier: Apache-2.0
#include "support/AppFolder.h"

#include <app_common.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <string>

namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr const char *kTwoApplications = R"(<manifest package="org.example" version="1">
  <ui-application appid="org.example.first" exec="elsewhere"/>
  <service-application appid="org.example.second" exec="bin/music"/>
</manifest>)";

std::string manifestWith(const std::string &content) {
  return R"(<manifest package="org.example"><ui-application appid="org.example.music">)" + content
         + "</ui-application></manifest>";
}

TEST(AnApplicationId, ComesFromTheLauncher) {
  const AppFolder folder;

  const Outcome outcome = folder.ask("id", {"AUL_APPID=org.example.launched"});

  EXPECT_EQ(outcome.out, "0 org.example.launched\n");
}

TEST(AnApplicationId, OfTheLauncherCountsMoreThanTheManifest) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  const Outcome outcome = folder.ask("id", {"AUL_APPID=org.example.launched"});

  EXPECT_EQ(outcome.out, "0 org.example.launched\n");
}

TEST(AnApplicationId, ComesFromTheManifestWhenTheLauncherGaveAnEmptyOne) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  const Outcome outcome = folder.ask("id", {"AUL_APPID="});

  EXPECT_EQ(outcome.out, "0 org.example.music\n");
}

TEST(AnApplicationId, ComesFromTheManifestOneFolderAboveTheProgram) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  const Outcome outcome = folder.ask("id");

  EXPECT_EQ(outcome.out, "0 org.example.music\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(AnApplicationId, ComesFromTheManifestBesideTheProgramFirst) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", manifestWith(""));
  folder.write("bin/tizen-manifest.xml",
               R"(<manifest package="p"><ui-application appid="org.example.beside"/></manifest>)");

  const Outcome outcome = folder.ask("id");

  EXPECT_EQ(outcome.out, "0 org.example.beside\n");
}

TEST(AnApplicationId, IsNotLookedForTwoFoldersAboveTheProgram) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);
  const std::string program = folder.putProbe("usr/bin/music");

  const Outcome outcome = run(program, {"id"});

  EXPECT_EQ(outcome.out, "-1 untouched\n");
}

TEST(AnApplicationId, IsThatOfTheApplicationThatTheProgramExecutes) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kTwoApplications);

  const Outcome outcome = folder.ask("id");

  EXPECT_EQ(outcome.out, "0 org.example.second\n");
}

TEST(AnApplicationId, IsThatOfTheFirstApplicationWhenTheProgramGoesByAnotherName) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kTwoApplications);
  const std::string program = folder.putProbe("bin/renamed");

  const Outcome outcome = run(program, {"id"});

  EXPECT_EQ(outcome.out, "0 org.example.first\n");
}

TEST(AnApplicationId, IsUnknownWithoutLauncherAndManifest) {
  const AppFolder folder;

  const Outcome outcome = folder.ask("id");

  EXPECT_EQ(outcome.out, "-1 untouched\n");
}

TEST(AnApplicationId, ThatIsUnknownIsExplainedInTheLog) {
  const AppFolder folder;

  const Outcome outcome = folder.ask("id");

  EXPECT_THAT(outcome.err, AllOf(HasSubstr("APP_COMMON"), HasSubstr(folder.path("bin/music")),
                                 HasSubstr("set AUL_APPID")));
}

TEST(AnApplicationId, IsUnknownWithAMalformedManifest) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", "<manifest>\n<oops");

  const Outcome outcome = folder.ask("id");

  EXPECT_EQ(outcome.out, "-1 untouched\n");
  EXPECT_THAT(outcome.err, HasSubstr(folder.path("tizen-manifest.xml") + ":2: "));
}

TEST(AnApplicationId, NeedsAPlaceToGo) {
  EXPECT_EQ(app_get_id(nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(AnApplicationName, IsTheLabel) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  EXPECT_EQ(folder.ask("name").out, "0 Music\n");
}

TEST(AnApplicationName, IsTheLabelWithoutALanguage) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml",
               manifestWith(R"(<label xml:lang="de-de">Musik</label><label>Music</label>)"));

  EXPECT_EQ(folder.ask("name").out, "0 Music\n");
}

TEST(AnApplicationName, IsTheFirstLabelWhenAllHaveALanguage) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", manifestWith(R"(<label xml:lang="de-de">Musik</label>)"
                                                  R"(<label xml:lang="fr-fr">Musique</label>)"));

  EXPECT_EQ(folder.ask("name").out, "0 Musik\n");
}

TEST(AnApplicationName, IsTheIdWithoutALabel) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", manifestWith(""));

  EXPECT_EQ(folder.ask("name").out, "0 org.example.music\n");
}

TEST(AnApplicationName, IsUnknownWhenNoManifestDeclaresTheId) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  const Outcome outcome = folder.ask("name", {"AUL_APPID=org.example.other"});

  EXPECT_EQ(outcome.out, "-1 untouched\n");
  EXPECT_THAT(outcome.err, HasSubstr("org.example.other"));
}

TEST(AnApplicationName, IsUnknownWithoutAnId) {
  const AppFolder folder;

  EXPECT_EQ(folder.ask("name").out, "-1 untouched\n");
}

TEST(AnApplicationName, NeedsAPlaceToGo) {
  EXPECT_EQ(app_get_name(nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(AnApplicationVersion, IsThatOfThePackage) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  EXPECT_EQ(folder.ask("version").out, "0 1.2.3\n");
}

TEST(AnApplicationVersion, IsEmptyWhenThePackageHasNone) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", manifestWith(""));

  EXPECT_EQ(folder.ask("version").out, "0 \n");
}

TEST(AnApplicationVersion, IsUnknownWithoutAnId) {
  const AppFolder folder;

  EXPECT_EQ(folder.ask("version").out, "-1 untouched\n");
}

TEST(AnApplicationVersion, NeedsAPlaceToGo) {
  EXPECT_EQ(app_get_version(nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(AResourcePath, LiesBesideTheManifest) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  EXPECT_EQ(folder.ask("resource-path").out, "0 " + folder.path("res/") + "\n");
}

TEST(AResourcePath, LiesInTheFolderOfAnApplicationThatIsInstalledElsewhere) {
  const AppFolder folder;
  folder.write("apps/org.example.music/tizen-manifest.xml", kMusicManifest);

  const Outcome outcome =
      folder.ask("resource-path",
                 {"AUL_APPID=org.example.music", "NORIX_DESKTOP_APPS=" + folder.path("apps")});

  EXPECT_EQ(outcome.out, "0 " + folder.path("apps/org.example.music/res/") + "\n");
}

TEST(AResourcePath, IsNullWithoutAnId) {
  const AppFolder folder;

  EXPECT_EQ(folder.ask("resource-path").out, "-1 null\n");
}

TEST(ADataPath, LiesInTheFolderForData) {
  const AppFolder folder;

  const Outcome outcome = folder.ask(
      "data-path", {"AUL_APPID=org.example.music", "XDG_DATA_HOME=" + folder.path("data")});

  EXPECT_EQ(outcome.out, "0 " + folder.path("data/org.example.music/") + "\n");
}

TEST(ADataPath, LiesInTheHomeFolderWithoutAFolderForData) {
  const AppFolder folder;

  const Outcome outcome =
      folder.ask("data-path", {"AUL_APPID=org.example.music", "HOME=" + folder.path()});

  EXPECT_EQ(outcome.out, "0 " + folder.path(".local/share/org.example.music/") + "\n");
}

TEST(ADataPath, LiesInTheHomeFolderWhenTheFolderForDataIsARelativePath) {
  const AppFolder folder;

  const Outcome outcome = folder.ask(
      "data-path", {"AUL_APPID=org.example.music", "XDG_DATA_HOME=data", "HOME=" + folder.path()});

  EXPECT_EQ(outcome.out, "0 " + folder.path(".local/share/org.example.music/") + "\n");
}

TEST(ADataPath, IsAFolderOfTheUserAlone) {
  const AppFolder folder;

  (void)folder.ask("data-path",
                   {"AUL_APPID=org.example.music", "XDG_DATA_HOME=" + folder.path("data")});

  EXPECT_EQ(std::filesystem::status(folder.path("data/org.example.music")).permissions(),
            std::filesystem::perms::owner_all);
}

TEST(ADataPath, MayBeThereAlready) {
  const AppFolder folder;
  folder.write("data/org.example.music/kept", "kept");

  const Outcome outcome = folder.ask(
      "data-path", {"AUL_APPID=org.example.music", "XDG_DATA_HOME=" + folder.path("data")});

  EXPECT_EQ(outcome.out, "0 " + folder.path("data/org.example.music/") + "\n");
  EXPECT_TRUE(std::filesystem::exists(folder.path("data/org.example.music/kept")));
}

TEST(ADataPath, IsNullWhereAFileIsInItsPlace) {
  const AppFolder folder;
  folder.write("data/org.example.music", "a file");

  const Outcome outcome = folder.ask(
      "data-path", {"AUL_APPID=org.example.music", "XDG_DATA_HOME=" + folder.path("data")});

  EXPECT_EQ(outcome.out, "-1 null\n");
  EXPECT_THAT(outcome.err, HasSubstr(folder.path("data/org.example.music")));
}

TEST(ADataPath, IsNullForAnIdThatWouldLeadElsewhere) {
  const AppFolder folder;

  const Outcome outcome =
      folder.ask("data-path", {"AUL_APPID=../other", "XDG_DATA_HOME=" + folder.path("data")});

  EXPECT_EQ(outcome.out, "-1 null\n");
  EXPECT_FALSE(std::filesystem::exists(folder.path("other")));
}

TEST(ADataPath, IsNullWithoutAHomeFolder) {
  const AppFolder folder;

  EXPECT_EQ(folder.ask("data-path", {"AUL_APPID=org.example.music"}).out, "-1 null\n");
}

TEST(ADataPath, IsNullWithoutAnId) {
  const AppFolder folder;

  EXPECT_EQ(folder.ask("data-path", {"HOME=" + folder.path()}).out, "-1 null\n");
}

} // namespace
