// SPDX-License-Identifier: Apache-2.0
#include "manifest/ManifestReader.h"

#include "support/AppFolder.h"

#include <gmock/gmock.h>
#include <ostream>
#include <string>

namespace {

using platform::application::Manifest;
using platform::application::ManifestError;
using platform::application::ManifestReader;

Manifest parse(const std::string &text) {
  return ManifestReader::parse(text, "m.xml");
}

// What the reader says against a text, or "accepted".
std::string objection(const std::string &text) {
  try {
    parse(text);
    return "accepted";
  } catch (const ManifestError &error) {
    EXPECT_EQ(error.kind(), ManifestError::Kind::Malformed);
    return error.what();
  }
}

std::string around(const std::string &content) {
  return R"(<manifest package="p"><ui-application appid="a"/>)" + content + "</manifest>";
}

TEST(AManifest, HasThePackageAndItsVersion) {
  const Manifest manifest = parse(kMusicManifest);

  EXPECT_EQ(manifest.package, "org.example");
  EXPECT_EQ(manifest.version, "1.2.3");
}

TEST(AManifest, DeclaresApplicationsOfAllKindsInOrder) {
  const Manifest manifest =
      parse(R"(<manifest package="p"><ui-application appid="a"/><service-application appid="b"/>
               <widget-application appid="c"/><watch-application appid="d"/></manifest>)");

  ASSERT_EQ(manifest.applications.size(), 4U);
  EXPECT_EQ(manifest.applications[0].id, "a");
  EXPECT_EQ(manifest.applications[1].id, "b");
  EXPECT_EQ(manifest.applications[2].id, "c");
  EXPECT_EQ(manifest.applications[3].id, "d");
}

TEST(AManifest, MayHoldElementsThatAreNothingToUs) {
  EXPECT_EQ(objection(around("<profile name=\"x\"/><feature name=\"y\">true</feature>")),
            "accepted");
}

TEST(AManifest, MayBeginWithAByteOrderMark) {
  EXPECT_EQ(objection("\xEF\xBB\xBF" + around("")), "accepted");
}

TEST(AManifest, MayHaveLinesThatEndInTheMannerOfWindows) {
  const Manifest manifest = parse("<manifest package=\"p\">\r\n<ui-application\r\n appid=\"a\"/>"
                                  "\r\n</manifest>\r\n");

  EXPECT_NE(manifest.find("a"), nullptr);
}

TEST(AManifest, FindsNoApplicationThatItDoesNotDeclare) {
  EXPECT_EQ(parse(kMusicManifest).find("org.example"), nullptr);
}

struct Malformed {
  const char *name;
  std::string text;
  const char *objection;
};

void PrintTo(const Malformed &row, std::ostream *out) {
  *out << row.name;
}

class AMalformedManifest : public testing::TestWithParam<Malformed> {};

TEST_P(AMalformedManifest, IsRefusedWithItsLineAndWhatToDo) {
  EXPECT_EQ(objection(GetParam().text), GetParam().objection);
}

INSTANTIATE_TEST_SUITE_P(
    , AMalformedManifest,
    testing::Values(
        Malformed{"Empty", "", "m.xml:1: No document element found; correct the XML there"},
        Malformed{"Garbage", "\x01\x02\xFF",
                  "m.xml:1: No document element found; correct the XML there"},
        Malformed{"TagNotClosed", "<manifest package=\"p\">\n\n<ui-application appid=\"a\">\n",
                  "m.xml:3: Start-end tags mismatch; correct the XML there"},
        Malformed{"NulByte", around(std::string(1, '\0')),
                  "m.xml:1: a NUL byte; save the file as UTF-8 text"},
        Malformed{"AnotherDocument", "\n<html/>",
                  "m.xml:2: the document is a <html>; a manifest begins with <manifest>"},
        Malformed{"NoPackage", "<manifest><ui-application appid=\"a\"/></manifest>",
                  "m.xml:1: <manifest> has no attribute 'package'; add it"},
        Malformed{"NoApplication", "<manifest package=\"p\"/>",
                  "m.xml:1: no application is declared; add a <ui-application> or a "
                  "<service-application>"},
        Malformed{"NoAppId", "<manifest package=\"p\">\n<ui-application/></manifest>",
                  "m.xml:2: <ui-application> has no attribute 'appid'; add it"},
        Malformed{"EmptyAppId", "<manifest package=\"p\"><ui-application appid=\"\"/></manifest>",
                  "m.xml:1: <ui-application> has no attribute 'appid'; add it"},
        Malformed{"AppIdWithASlash",
                  "<manifest package=\"p\"><ui-application appid=\"../a\"/></manifest>",
                  "m.xml:1: the appid '../a' cannot be used; choose one without '/'"},
        Malformed{"AppIdOfTheFolderAbove",
                  "<manifest package=\"p\"><ui-application appid=\"..\"/></manifest>",
                  "m.xml:1: the appid '..' cannot be used; choose one without '/'"},
        Malformed{"MetadataWithoutAKey",
                  "<manifest package=\"p\"><ui-application appid=\"a\">\n<metadata value=\"v\"/>"
                  "</ui-application></manifest>",
                  "m.xml:2: <metadata> has no attribute 'key'; add it"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(AManifestCutShort, IsRefusedAtEveryLength) {
  const std::string whole = kMusicManifest;

  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(objection(whole.substr(0, length)), "accepted") << "cut at " << length;
  }
}

TEST(AHostileManifest, CannotExpandEntities) {
  const Manifest manifest = parse(R"(<!DOCTYPE m [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;">]>
    <manifest package="p"><ui-application appid="a"><label>&b;</label></ui-application></manifest>)");

  EXPECT_EQ(manifest.applications[0].label, "&b;");
}

TEST(AHostileManifest, CannotReadOtherFiles) {
  const Manifest manifest = parse(R"(<!DOCTYPE m [<!ENTITY x SYSTEM "file:///etc/passwd">]>
    <manifest package="p"><ui-application appid="a"><label>&x;</label></ui-application></manifest>)");

  EXPECT_EQ(manifest.applications[0].label, "&x;");
}

TEST(AHostileManifest, MayNestAsDeepAsItsSizeAllows) {
  constexpr std::size_t kDepth = 140000;
  std::string nested;
  for (std::size_t depth = 0; depth < kDepth; ++depth) {
    nested += "<a>";
  }
  for (std::size_t depth = 0; depth < kDepth; ++depth) {
    nested += "</a>";
  }

  EXPECT_EQ(objection(around(nested)), "accepted");
}

TEST(AManifestFile, OfTheLargestSizeIsRead) {
  const AppFolder folder;
  const std::string start = around("");
  folder.write("m.xml", start + std::string(ManifestReader::kMaxBytes - start.size(), ' '));

  EXPECT_EQ(ManifestReader::read(folder.path("m.xml")).package, "p");
}

TEST(AManifestFile, OfOneByteMoreIsUnreadable) {
  const AppFolder folder;
  const std::string start = around("");
  folder.write("m.xml", start + std::string(ManifestReader::kMaxBytes - start.size() + 1, ' '));

  try {
    ManifestReader::read(folder.path("m.xml"));
    FAIL() << "accepted";
  } catch (const ManifestError &error) {
    EXPECT_EQ(error.kind(), ManifestError::Kind::Unreadable);
    EXPECT_EQ(error.what(), folder.path("m.xml")
                                + ": has 1048577 bytes, more than the 1048576 a manifest may "
                                  "have; shorten it");
  }
}

TEST(AManifestFile, ThatIsMissingIsUnreadable) {
  const AppFolder folder;

  try {
    ManifestReader::read(folder.path("m.xml"));
    FAIL() << "accepted";
  } catch (const ManifestError &error) {
    EXPECT_EQ(error.kind(), ManifestError::Kind::Unreadable);
    EXPECT_THAT(error.what(), testing::HasSubstr("No such file or directory"));
  }
}

} // namespace
