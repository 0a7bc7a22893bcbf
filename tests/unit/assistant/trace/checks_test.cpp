// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/checks.h"

#include <norix.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using norix::assistant::trace::checkAllowList;
using norix::assistant::trace::checkSdkVersion;
using norix::assistant::trace::editDistance;
using norix::assistant::trace::Finding;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char *kKey = NORIX_SDK_VERSION_METADATA_KEY;
constexpr const char *kManifest = "/apps/music/tizen-manifest.xml";
constexpr const char *kSender = "com.valtren.tizen.norix";

auto isFinding(const std::string &word, const std::string &part) {
  return AllOf(Field(&Finding::word, word), Field(&Finding::sentence, HasSubstr(part)));
}

TEST(TheSdkVersionCheck, AcceptsTheBetaSeries) {
  EXPECT_THAT(checkSdkVersion({{"other", ""}, {kKey, "1.0-beta"}}, kManifest), IsEmpty());
}

TEST(TheSdkVersionCheck, MissesTheKeyAndNamesTheManifest) {
  EXPECT_THAT(checkSdkVersion({{"http://example.org/colour", "blue"}}, kManifest),
              ElementsAre(isFinding("no-metadata-key", kManifest)));
}

TEST(TheSdkVersionCheck, TakesTheLastOfTwoEntriesAsTheLibraryDoes) {
  EXPECT_THAT(checkSdkVersion({{kKey, "1.0-beta"}, {kKey, "1.0-alpha2"}}, kManifest),
              ElementsAre(isFinding("sdk-version-alpha", "'1.0-alpha2'")));
}

TEST(TheSdkVersionCheck, RejectsAnEmptyVersion) {
  EXPECT_THAT(checkSdkVersion({{kKey, ""}}, kManifest),
              ElementsAre(isFinding("sdk-version-empty", "without a value")));
}

TEST(TheSdkVersionCheck, RejectsAKeyWithoutAVersion) {
  EXPECT_THAT(checkSdkVersion({{kKey, "", false}}, kManifest),
              ElementsAre(isFinding("sdk-version-missing", "add value=\"1.0-beta\"")));
}

class AMisspeltKey : public testing::TestWithParam<const char *> {};

TEST_P(AMisspeltKey, IsNamedWithTheRightOne) {
  EXPECT_THAT(checkSdkVersion({{GetParam(), "1.0-beta"}}, kManifest),
              ElementsAre(AllOf(isFinding("metadata-key-misspelt", GetParam()),
                                isFinding("metadata-key-misspelt", kKey))));
}

INSTANTIATE_TEST_SUITE_P(Each, AMisspeltKey,
                         testing::Values("http://valtren.com/tizen/metadata/norix/sdk/versoin",
                                         "http://valtren.com/tizen/metadata/norix/sdk-version",
                                         "https://valtren.com/tizen/metadata/norix/sdk/version",
                                         "http://valtren.com/tizen/metadata/norix/sdk/version/",
                                         "http://Valtren.com/tizen/metadata/Norix/SDK/version",
                                         "http://tizen.org/tizen/metadata/norix/sdk/version",
                                         "/tizen/metadata/norix/sdk/version"));

class TheAllowListCheck : public testing::Test {
protected:
  TheAllowListCheck() {
    std::string folder = "/tmp/norix-checks-XXXXXX";
    _folder = mkdtemp(folder.data()) != nullptr ? folder : std::string();
  }
  ~TheAllowListCheck() override { std::filesystem::remove_all(_folder); }

  std::string path() const { return _folder / "list"; }
  std::vector<Finding> check(const std::string &content) const {
    std::ofstream(path(), std::ios::binary) << content;
    return checkAllowList(path(), kSender);
  }

private:
  std::filesystem::path _folder;
};

TEST_F(TheAllowListCheck, HasNothingToSayOfAFileThatIsNotThere) {
  EXPECT_THAT(checkAllowList(path(), kSender), IsEmpty());
}

TEST_F(TheAllowListCheck, AcceptsTheSenderOnALineOfItsOwn) {
  EXPECT_THAT(check("org.example.other\ncom.valtren.tizen.norix"), IsEmpty());
}

TEST_F(TheAllowListCheck, NamesTheFileThatIsEmpty) {
  EXPECT_THAT(check(""), ElementsAre(isFinding("allow-list-empty", path())));
}

TEST_F(TheAllowListCheck, KnowsCrlf) {
  EXPECT_THAT(check("com.valtren.tizen.norix\r\n"),
              ElementsAre(isFinding("allow-list-crlf", path())));
}

TEST_F(TheAllowListCheck, KnowsBlanks) {
  EXPECT_THAT(check(" com.valtren.tizen.norix\n"),
              ElementsAre(isFinding("allow-list-blanks", path())));
}

TEST_F(TheAllowListCheck, NamesTheSenderThatIsMissing) {
  EXPECT_THAT(check("org.example.other\n"),
              ElementsAre(isFinding("allow-list-lacks-sender", kSender)));
}

TEST(TheEditDistance, CountsInsertionsDeletionsAndReplacements) {
  EXPECT_EQ(editDistance("", ""), 0U);
  EXPECT_EQ(editDistance("abc", ""), 3U);
  EXPECT_EQ(editDistance("", "ab"), 2U);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

} // namespace
