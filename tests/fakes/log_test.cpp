// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <dlog.h>

namespace {

using fake::library;
using fake::LinesAre;
using fake::platform;
using testing::Not;

class TheFakeLog : public fake::NothingLeft {};

TEST_F(TheFakeLog, TakesALineOfTheLibraryApart) {
  library([] {
    return dlog_print(DLOG_ERROR, "NORIX-APPSDK", "%s %s %s(%d): count %d of %s",
                      "v1.0-beta.1.4_tz6.5_211014 : ", "file.cpp", "function", 12, 3, "songs");
  });

  EXPECT_THAT(
      platform().log.lines(),
      LinesAre({fake::IsLine("file.cpp", "function", "count %d of %s", "count 3 of songs")}));
  EXPECT_EQ(platform().log.last().line, 12);
}

TEST_F(TheFakeLog, TakesALineOfTheStubApart) {
  library([] {
    return dlog_print(DLOG_ERROR, "RPC_PORT_STUB", "%s: %s(%d) > code %d", "message.cpp", "Listen",
                      12, -5);
  });

  EXPECT_THAT(platform().log.lines(), LinesAre({fake::IsStubLine("Listen", "code %d", "code -5")}));
}

TEST_F(TheFakeLog, KeepsTheWholeOfALongText) {
  const std::string longText(1 << 20, 'x');

  dlog_print(DLOG_ERROR, "tag", "%s", longText.c_str());

  EXPECT_EQ(platform().log.last().text, longText);
}

TEST_F(TheFakeLog, IsMisusedWithALineOutOfForm) {
  library([] {
    dlog_print(DLOG_WARN, "NORIX-APPSDK", "%s %s %s(%d): priority",
               "v1.0-beta.1.4_tz6.5_211014 : ", "file.cpp", "function", 1);
    dlog_print(DLOG_ERROR, "NORIX-APPSDK", "%s %s %s(%d): version", "v1.0", "file.cpp", "function",
               1);
    dlog_print(DLOG_ERROR, "NORIX-APPSDK", "%s %s %s(%d): file",
               "v1.0-beta.1.4_tz6.5_211014 : ", "src/file.cpp", "function", 1);
    dlog_print(DLOG_ERROR, "NORIX-APPSDK", "head");
    dlog_print(DLOG_ERROR, "OTHER", "%s %s %s(%d): tag",
               "v1.0-beta.1.4_tz6.5_211014 : ", "file.cpp", "function", 1);
    dlog_print(DLOG_ERROR, "RPC_PORT_STUB", "%s: %s(%d) > stub", "other.cpp", "function", 1);
  });

  EXPECT_THAT(platform().misuses, fake::TextsAre({"dlog_print with a line out of form: priority",
                                                  "dlog_print with a line out of form: version",
                                                  "dlog_print with a line out of form: file",
                                                  "dlog_print with a line out of form: head",
                                                  "dlog_print with a line out of form: tag",
                                                  "dlog_print with a line out of form: stub"}));
  platform().misuses.clear();
}

// The matchers stand for many assertions: each part has to count.
class ALineMatcher : public testing::Test {
protected:
  fake::LogLine line{6,
                     "NORIX-APPSDK",
                     "%s %s %s(%d): text",
                     "v1.0-beta.1.4_tz6.5_211014 : ",
                     "file.cpp",
                     "function",
                     1,
                     "text"};
};

TEST_F(ALineMatcher, MatchesTheLineItself) {
  EXPECT_THAT(line, fake::IsLine("file.cpp", "function", "text"));
}

TEST_F(ALineMatcher, MindsEachPart) {
  const auto changed = [this](auto change) {
    fake::LogLine other = line;
    change(other);
    return other;
  };
  const auto original = Not(fake::IsLine("file.cpp", "function", "text"));

  EXPECT_THAT(changed([](auto &l) { l.priority = 5; }), original);
  EXPECT_THAT(changed([](auto &l) { l.tag = "NORIX"; }), original);
  EXPECT_THAT(changed([](auto &l) { l.format = "%s %s %s(%d): %s"; }), original);
  EXPECT_THAT(changed([](auto &l) { l.prefix = "v1.0-beta.1.4_tz6.5_211014 :"; }), original);
  EXPECT_THAT(changed([](auto &l) { l.file = "src/file.cpp"; }), original);
  EXPECT_THAT(changed([](auto &l) { l.function = "other"; }), original);
  EXPECT_THAT(changed([](auto &l) { l.line = 0; }), original);
  EXPECT_THAT(changed([](auto &l) { l.text = "other"; }), original);
}

} // namespace
