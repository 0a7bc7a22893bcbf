// SPDX-License-Identifier: Apache-2.0
#include "support/AppFolder.h"

#include <app_manager.h>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

constexpr const char *kId = "org.example.music";

/** @brief A folder of installed applications, and information of one of them. */
class InstalledApplications : public testing::Test {
protected:
  InstalledApplications() { setenv("NORIX_DESKTOP_APPS", _folder.path().c_str(), 1); }
  ~InstalledApplications() override {
    if (_info != nullptr) {
      app_info_destroy(_info);
    }
    unsetenv("NORIX_DESKTOP_APPS");
  }

  void install(const std::string &manifest) const {
    _folder.write(std::string(kId) + "/tizen-manifest.xml", manifest);
  }

  int create(const char *id = kId) { return app_info_create(id, &_info); }

  const AppFolder _folder;
  app_info_h _info = nullptr;
};

class AnAppInfo : public InstalledApplications {
protected:
  AnAppInfo() {
    install(kMusicManifest);
    if (create() != APP_MANAGER_ERROR_NONE) {
      throw std::runtime_error("the information of an installed application was not created");
    }
  }

  std::string get(int (*getter)(app_info_h, char **)) const {
    char *text = nullptr;
    EXPECT_EQ(getter(_info, &text), APP_MANAGER_ERROR_NONE);
    std::string copy = text != nullptr ? text : "null";
    free(text);
    return copy;
  }
};

using Entries = std::vector<std::pair<std::string, std::string>>;

bool collect(const char *key, const char *value, void *entries) {
  static_cast<Entries *>(entries)->emplace_back(key, value);
  return true;
}

bool collectTwo(const char *key, const char *value, void *entries) {
  collect(key, value, entries);
  return static_cast<Entries *>(entries)->size() < 2;
}

bool throwText(const char * /*key*/, const char * /*value*/, void * /*userData*/) {
  throw std::runtime_error("from the callback");
}

TEST_F(InstalledApplications, AreFoundByTheirId) {
  install(kMusicManifest);

  EXPECT_EQ(create(), APP_MANAGER_ERROR_NONE);
  EXPECT_NE(_info, nullptr);
}

TEST_F(InstalledApplications, AreFoundBehindOthersOfTheirPackage) {
  install(R"(<manifest package="p"><ui-application appid="org.example.other"/>
             <ui-application appid="org.example.music"/></manifest>)");

  EXPECT_EQ(create(), APP_MANAGER_ERROR_NONE);
}

TEST_F(InstalledApplications, AreMissingWithoutAFolder) {
  EXPECT_EQ(create(), APP_MANAGER_ERROR_NO_SUCH_APP);
  EXPECT_EQ(_info, nullptr);
}

TEST_F(InstalledApplications, AreMissingWhenTheManifestInTheirFolderDeclaresAnother) {
  install(R"(<manifest package="p"><ui-application appid="org.example.other"/></manifest>)");

  EXPECT_EQ(create(), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(InstalledApplications, AreMissingWhenNoFolderIsNamed) {
  install(kMusicManifest);
  unsetenv("NORIX_DESKTOP_APPS");

  EXPECT_EQ(create(), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(InstalledApplications, AreMissingUnderAnEmptyId) {
  _folder.write("tizen-manifest.xml", kMusicManifest);

  EXPECT_EQ(create(""), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(InstalledApplications, AreMissingUnderAnIdThatLeadsElsewhere) {
  _folder.write("apps/inside", "");
  setenv("NORIX_DESKTOP_APPS", _folder.path("apps").c_str(), 1);
  // Never read: a malformed manifest would be another error.
  _folder.write("tizen-manifest.xml", "malformed");

  EXPECT_EQ(create(".."), APP_MANAGER_ERROR_NO_SUCH_APP);
  EXPECT_EQ(create("../"), APP_MANAGER_ERROR_NO_SUCH_APP);
  EXPECT_EQ(create("inside/../.."), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(InstalledApplications, AreMissingUnderAnIdThatIsTooLongForAFolder) {
  EXPECT_EQ(create(std::string(300, 'x').c_str()), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(InstalledApplications, NeedAnId) {
  EXPECT_EQ(create(nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
}

TEST_F(InstalledApplications, NeedAPlaceForTheInformation) {
  install(kMusicManifest);

  EXPECT_EQ(app_info_create(kId, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
}

TEST_F(InstalledApplications, WithAMalformedManifestAreARecordThatFailed) {
  install("<manifest");

  EXPECT_EQ(create(), APP_MANAGER_ERROR_DB_FAILED);
  EXPECT_EQ(_info, nullptr);
}

TEST_F(InstalledApplications, WithAFolderInTheManifestsPlaceCannotBeRead) {
  install("");
  const std::string manifest = _folder.path(std::string(kId) + "/tizen-manifest.xml");
  std::filesystem::remove(manifest);
  std::filesystem::create_directory(manifest);

  EXPECT_EQ(create(), APP_MANAGER_ERROR_IO_ERROR);
}

TEST_F(InstalledApplications, WithAPipeInTheManifestsPlaceCannotBeReadAndHoldNobodyUp) {
  install("");
  const std::string manifest = _folder.path(std::string(kId) + "/tizen-manifest.xml");
  std::filesystem::remove(manifest);
  ASSERT_EQ(mkfifo(manifest.c_str(), S_IRWXU), 0);

  EXPECT_EQ(create(), APP_MANAGER_ERROR_IO_ERROR);
}

TEST_F(InstalledApplications, WithALinkToItselfInTheManifestsPlaceCannotBeRead) {
  install("");
  const std::string manifest = _folder.path(std::string(kId) + "/tizen-manifest.xml");
  std::filesystem::remove(manifest);
  std::filesystem::create_symlink(manifest, manifest);

  EXPECT_EQ(create(), APP_MANAGER_ERROR_IO_ERROR);
}

TEST(TheLog, SaysWhichManifestIsWrongWhereAndWhatToDo) {
  const AppFolder folder;
  folder.write("apps/org.example.other/tizen-manifest.xml",
               "<manifest package=\"p\">\n<ui-application/></manifest>");

  const Outcome outcome =
      folder.ask("org.example.other", {"NORIX_DESKTOP_APPS=" + folder.path("apps")});

  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("APP_MANAGER"),
                    HasSubstr(folder.path("apps/org.example.other/tizen-manifest.xml") + ":2: "),
                    HasSubstr("'appid'; add it")));
}

TEST(TheLog, SaysWhereAMissingApplicationWasLookedFor) {
  const AppFolder folder;

  const Outcome outcome = folder.ask("org.example.other");

  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("APP_MANAGER"),
                    HasSubstr("$NORIX_DESKTOP_APPS/org.example.other/tizen-manifest.xml")));
}

TEST(TheLog, SaysWhatAnIdMustNotBe) {
  const AppFolder folder;

  const Outcome outcome = folder.ask("..");

  EXPECT_EQ(outcome.out, std::to_string(APP_MANAGER_ERROR_NO_SUCH_APP) + "\n");
  EXPECT_THAT(
      outcome.err,
      HasSubstr("no application '..': an id is not empty, not '.' or '..', and holds no '/'"));
}

TEST(ARunningApplication, FindsWhatItsOwnManifestDeclares) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  const Outcome outcome = folder.ask(kId);

  EXPECT_EQ(outcome.out, "0\n"
                         "0 org.example.music\n"
                         "0 music\n"
                         "0 Music\n"
                         "0 org.example\n"
                         "0 dotnet\n"
                         "first=1\n"
                         "second=\n"
                         "third=3\n"
                         "0\n");
}

TEST(ARunningApplication, FindsOthersAmongTheInstalled) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);
  folder.write("apps/other/tizen-manifest.xml",
               R"(<manifest package="p"><ui-application appid="other"/></manifest>)");

  const Outcome outcome = folder.ask("other", {"NORIX_DESKTOP_APPS=" + folder.path("apps")});

  EXPECT_EQ(outcome.out, "0\n0 other\n0 \n0 \n0 p\n0 capp\n0\n");
}

TEST_F(AnAppInfo, HasTheId) {
  EXPECT_EQ(get(app_info_get_app_id), "org.example.music");
}

TEST_F(AnAppInfo, HasTheProgram) {
  EXPECT_EQ(get(app_info_get_exec), "music");
}

TEST_F(AnAppInfo, HasTheLabel) {
  EXPECT_EQ(get(app_info_get_label), "Music");
}

TEST_F(AnAppInfo, HasThePackage) {
  EXPECT_EQ(get(app_info_get_package), "org.example");
}

TEST_F(AnAppInfo, HasTheType) {
  EXPECT_EQ(get(app_info_get_type), "dotnet");
}

TEST_F(AnAppInfo, HasMetadataInTheOrderOfTheManifest) {
  Entries entries;

  EXPECT_EQ(app_info_foreach_metadata(_info, collect, &entries), APP_MANAGER_ERROR_NONE);

  EXPECT_THAT(entries, ElementsAre(Pair("first", "1"), Pair("second", ""), Pair("third", "3")));
}

TEST_F(AnAppInfo, StopsGoingThroughTheMetadataWhenTold) {
  Entries entries;

  EXPECT_EQ(app_info_foreach_metadata(_info, collectTwo, &entries), APP_MANAGER_ERROR_NONE);

  EXPECT_THAT(entries, ElementsAre(Pair("first", "1"), Pair("second", "")));
}

TEST_F(AnAppInfo, LetsAnExceptionOfTheCallbackPass) {
  EXPECT_THROW(app_info_foreach_metadata(_info, throwText, nullptr), std::runtime_error);
}

TEST_F(AnAppInfo, OutlivesItsManifest) {
  std::filesystem::remove_all(_folder.path(kId));

  EXPECT_EQ(get(app_info_get_label), "Music");
}

TEST_F(AnAppInfo, NeedsACallback) {
  EXPECT_EQ(app_info_foreach_metadata(_info, nullptr, nullptr),
            APP_MANAGER_ERROR_INVALID_PARAMETER);
}

TEST_F(AnAppInfo, NeedsAPlaceForEachAnswer) {
  EXPECT_EQ(app_info_get_app_id(_info, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_exec(_info, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_label(_info, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_package(_info, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_type(_info, nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);
}

TEST(ANullAppInfo, IsRefusedAndLeavesTheAnswerAlone) {
  char *text = nullptr;
  Entries entries;

  EXPECT_EQ(app_info_get_app_id(nullptr, &text), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_exec(nullptr, &text), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_label(nullptr, &text), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_package(nullptr, &text), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_get_type(nullptr, &text), APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_foreach_metadata(nullptr, collect, &entries),
            APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_destroy(nullptr), APP_MANAGER_ERROR_INVALID_PARAMETER);

  EXPECT_EQ(text, nullptr);
  EXPECT_THAT(entries, ElementsAre());
}

} // namespace
