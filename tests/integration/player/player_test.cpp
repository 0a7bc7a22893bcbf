// SPDX-License-Identifier: Apache-2.0
//
// The example with a window, on a screen in memory: the assistant acts, and the window shows it.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/player/Screen.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;

constexpr const char *kPlayer = "org.example.player";
constexpr int kScreenWidth = 560;
constexpr int kScreenHeight = 300;
// A frame is drawn in parts: what is seen is complete when it was the same so often.
constexpr int kLooks = 3;
// Inside the cover, beside the note on it.
constexpr std::size_t kCoverX = 40;
constexpr std::size_t kCoverY = 60;

// The colour whose share has grown most from the first picture to the second.
std::uint32_t mostAdded(const Picture &before, const Picture &after) {
  std::map<std::uint32_t, long> added;
  for (const std::uint32_t pixel : before.pixels) {
    --added[pixel];
  }
  for (const std::uint32_t pixel : after.pixels) {
    ++added[pixel];
  }
  const auto most = std::max_element(added.begin(), added.end(),
                                     [](auto &a, auto &b) { return a.second < b.second; });
  return most->first;
}

class ThePlayer : public IntegrationTest {
protected:
  void SetUp() override {
    const std::uint32_t colour = coverOfState();
    ASSERT_EQ(cover(screen.await([=](const Picture &seen) { return cover(seen) == colour; })),
              colour);
  }

  void TearDown() override { screen.close(); }

  static std::string answerOf(const std::vector<std::string> &request) {
    std::vector<std::string> command = {"run", kPlayer};
    command.insert(command.end(), request.begin(), request.end());
    const Outcome outcome = runAssistant(command);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
  static json state() { return json::parse(runAssistant({"state", kPlayer, "--wait", "20"}).out); }
  static std::uint32_t coverOfState() {
    const std::string colour = state().at("cover");
    return static_cast<std::uint32_t>(std::stoul(colour.substr(1), nullptr, 16));
  }
  static std::uint32_t cover(const Picture &picture) { return picture.at(kCoverX, kCoverY); }

  // What is seen once it has changed, and stays as it is.
  Picture changed(const Picture &before) const {
    Picture last = before;
    int looks = 0;
    return screen.await([&](const Picture &seen) {
      looks = seen == last ? looks + 1 : 0;
      last = seen;
      return seen != before && looks == kLooks;
    });
  }

  Screen screen{kScreenWidth, kScreenHeight};
  Process player = startAssistant({"launch", PLAYER_EXAMPLE}, {{"DISPLAY", screen.display()}});
};

TEST_F(ThePlayer, ShowsTheCoverOfTheTrackThatIsPlayed) {
  const std::uint32_t first = coverOfState();

  EXPECT_EQ(answerOf({"playerNext"}), "Playing Rain on Tin\n");

  const std::uint32_t second = coverOfState();
  EXPECT_NE(second, first);
  EXPECT_EQ(cover(screen.await([=](const Picture &seen) { return cover(seen) == second; })),
            second);
}

TEST_F(ThePlayer, ShowsHowLoudItIs) {
  const auto barOf = [this](const char *volume) {
    const Picture before = screen.picture();
    answerOf({"playerVolume", std::string("volume=") + volume});
    return changed(before);
  };
  const Picture silent = barOf("0");
  const Picture half = barOf("50");
  const Picture loud = barOf("100");

  const std::uint32_t colour = mostAdded(silent, loud);
  const auto lengthOf = [&](const Picture &picture) {
    return static_cast<double>(picture.count(colour) - silent.count(colour));
  };
  EXPECT_NEAR(lengthOf(half) / lengthOf(loud), 0.5, 0.05);
}

TEST_F(ThePlayer, ShowsTheLastRequestAndItsAnswer) {
  const Picture before = screen.picture();
  answerOf({"playerSeek", "second=0"});
  const Picture sought = changed(before);
  answerOf({"playerPause"});
  const Picture paused = changed(sought);
  answerOf({"playerSeek", "second=0"});

  const Picture again = changed(paused);

  // Nothing but the request differs: the track was at its start, and paused, all the time.
  EXPECT_EQ(cover(paused), cover(sought));
  EXPECT_NE(paused, sought);
  EXPECT_EQ(again, sought);
}

TEST_F(ThePlayer, RefusesAVolumeThatIsNone) {
  EXPECT_THAT(answerOf({"playerVolume", "volume=400"}), testing::StartsWith("Error: "));
  EXPECT_EQ(state().at("volume"), 40);
}

TEST_F(ThePlayer, EndsWellWhenItIsTerminated) {
  player.signal(SIGTERM);

  EXPECT_EQ(player.wait(), 0);
  EXPECT_EQ(runAssistant({"state", kPlayer}).status, 3);
}

TEST(ThePlayersFolder, HasScenariosThatPass) {
  const support::TemporaryRuntime runtime;
  Screen screen(kScreenWidth, kScreenHeight);

  const Outcome outcome =
      runAssistant({"test", PLAYER_SCENARIOS, "--app", PLAYER_EXAMPLE, "--jobs", "3"},
                   {{"DISPLAY", screen.display()}});

  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.out, testing::HasSubstr("3 scenarios: 3 passed"));
  screen.close();
}

TEST(ThePlayersFolder, HasNothingWrong) {
  const Outcome outcome = runAssistant({"doctor", PLAYER_EXAMPLE});

  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "nothing wrong found\n");
}

} // namespace
} // namespace integration
