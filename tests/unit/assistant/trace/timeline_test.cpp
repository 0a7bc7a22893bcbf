// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/Timeline.h"

#include <gmock/gmock.h>

#include <regex>

namespace {

using nlohmann::json;
using norix::assistant::trace::Event;
using norix::assistant::trace::monotonicNow;
using norix::assistant::trace::Timeline;
using testing::EndsWith;
using testing::HasSubstr;

constexpr std::uint64_t kMillisecond = 1000000;

class TheTimeLine : public testing::Test {
protected:
  // The line of an event so many milliseconds after the first.
  std::string lineAt(std::uint64_t milliseconds, const std::string &name, json members) {
    const Event event{name, _begin + milliseconds * kMillisecond, std::move(members)};
    return _timeline.line(event).value_or("");
  }
  std::string received(std::uint64_t milliseconds) {
    return lineAt(milliseconds, "received",
                  {{"request", 1},
                   {"action", "musicVolume"},
                   {"requestId", "42"},
                   {"params", "{\"volume\":40}"}});
  }
  std::string libraryLog(std::uint64_t milliseconds, const std::string &text) {
    return lineAt(milliseconds, "log",
                  {{"tag", "NORIX-APPSDK"}, {"function", "receiveRequest"}, {"text", text}});
  }

private:
  Timeline _timeline;
  std::uint64_t _begin = monotonicNow();
};

TEST_F(TheTimeLine, CountsFromTheRequest) {
  EXPECT_THAT(received(1000),
              HasSubstr("      0.0 ms  request 42 for musicVolume {\"volume\":40}"));
  EXPECT_EQ(lineAt(1012, "callback-entered", {{"action", "musicVolume"}}),
            "     12.0 ms  callback of musicVolume was entered");
}

TEST_F(TheTimeLine, SaysUntilWhenTheLibraryWaitsForAnAnswer) {
  received(0);

  EXPECT_TRUE(std::regex_match(
      lineAt(12, "callback-left", {{"action", "musicVolume"}, {"held", 1000000}}),
      std::regex(" +12\\.0 ms  callback of musicVolume returned after 1\\.0 ms without an answer; "
                 "the library waits until \\d\\d:\\d\\d:\\d\\d")));
}

TEST_F(TheTimeLine, SaysNothingOfWaitingOnceTheAnswerIsGiven) {
  received(0);
  EXPECT_THAT(lineAt(1, "call",
                     {{"function", "norix_complete_action_execution"},
                      {"result", 0},
                      {"text", "The volume is 40"}}),
              EndsWith("answered \"The volume is 40\" and handed to the channel"));

  EXPECT_THAT(lineAt(2, "callback-left", {{"action", "musicVolume"}, {"held", 2000000}}),
              EndsWith("callback of musicVolume returned after 2.0 ms"));
}

TEST_F(TheTimeLine, SaysWhyARequestIsNotDelivered) {
  received(0);

  EXPECT_THAT(
      libraryLog(0, "There is no matching action execution callback, waiting for sometime "
                    "to see if reg can happen"),
      EndsWith("no callback of musicVolume is registered; the library waits 0.12 s for it"));
  EXPECT_THAT(libraryLog(120, "There is no matching action execution callback."),
              EndsWith("still no callback; the library answers that none is registered"));
}

TEST_F(TheTimeLine, SkipsLogLinesThatSayWhatEventsSayBetter) {
  EXPECT_EQ(libraryLog(0, "Action Execution request recieved"), "");
}

TEST_F(TheTimeLine, ShowsWhatTheApplicationLogs) {
  EXPECT_THAT(lineAt(0, "log", {{"tag", "MUSIC"}, {"text", "no disk"}}),
              EndsWith("log MUSIC: no disk"));
}

TEST_F(TheTimeLine, NamesTheExceptionThatLeftACallback) {
  EXPECT_THAT(
      lineAt(0, "callback-left",
             {{"action", "musicPlay"}, {"exception", "St12out_of_range"}, {"what", "none"}}),
      EndsWith("callback of musicPlay was left by an exception: std::out_of_range (none)"));
}

TEST_F(TheTimeLine, ShowsControlCharactersInsteadOfSendingThem) {
  EXPECT_THAT(lineAt(0, "log", {{"tag", "X"}, {"text", "\x1b[31mred"}}),
              EndsWith("log X: \\e[31mred"));
}

TEST_F(TheTimeLine, SaysHowManyEventsAreMissing) {
  EXPECT_THAT(lineAt(0, "dropped", {{"count", 12}}), HasSubstr("12 events were lost"));
}

} // namespace
