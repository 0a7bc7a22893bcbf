// SPDX-License-Identifier: Apache-2.0
//
// The example applications, started and driven as a newcomer does: with norix-assistant.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/examples.h"

#include <gmock/gmock.h>

#include <csignal>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;

class ExampleTest : public IntegrationTest {
protected:
  // Starts an example, and waits until its log says that requests are welcome.
  static Process launch(const std::string &folder) {
    Process example = startAssistant({"launch", folder}, {{"DLOG_FILE", "/dev/stdout"}});
    while (example.readLine().find("App SDK NorixImpl is initialized") == std::string::npos) {
    }
    return example;
  }

  static std::string answerOf(const std::vector<std::string> &command) {
    const Outcome outcome = runAssistant(command);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
};

class TheLight : public ExampleTest {
protected:
  Process light = launch(LIGHT_EXAMPLE);
};

class TheMusic : public ExampleTest {
protected:
  Process music = launch(MUSIC_EXAMPLE);
};

TEST_F(TheLight, IsSwitchedOnAndOff) {
  EXPECT_EQ(answerOf({"state", kLight}), "{\"light\":\"off\"}\n");
  EXPECT_EQ(answerOf({"run", kLight, "lightOn"}), "The light is on\n");
  EXPECT_EQ(answerOf({"state", kLight}), "{\"light\":\"on\"}\n");
  EXPECT_EQ(answerOf({"run", kLight, "lightOff"}), "The light is off\n");
  EXPECT_EQ(answerOf({"state", kLight}), "{\"light\":\"off\"}\n");
}

TEST_F(TheLight, KnowsNoOtherAction) {
  const Outcome outcome = runAssistant({"run", kLight, "lightBlink"});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, testing::HasSubstr("Action Execution callback not registered"));
}

TEST_F(TheLight, EndsWellWhenItIsTerminated) {
  light.signal(SIGTERM);

  EXPECT_EQ(light.wait(), 0);
  EXPECT_EQ(runAssistant({"state", kLight}).status, 3);
}

TEST_F(TheMusic, TellsWhetherAndWhatItPlays) {
  answerOf({"run", kMusic, "musicPause"});
  const json before = json::parse(answerOf({"state", kMusic}));
  const std::string played = answerOf({"run", kMusic, "musicPlay"});
  const json after = json::parse(answerOf({"state", kMusic}));

  EXPECT_EQ(before.at("playing"), false);
  EXPECT_EQ(played, "Playing " + std::string(after.at("title")) + "\n");
  EXPECT_EQ(after.at("playing"), true);
}

TEST_F(TheMusic, TakesItsVolumeFromTheParameters) {
  const std::string result = answerOf({"run", kMusic, "musicVolume", "volume=40"});

  EXPECT_EQ(result, "The volume is 40\n");
  EXPECT_EQ(json::parse(answerOf({"state", kMusic})).at("volume"), 40);
}

TEST_F(TheMusic, SaysWhatIsWrongWithAVolume) {
  EXPECT_THAT(answerOf({"run", kMusic, "musicVolume", "volume=loud"}),
              testing::StartsWith("Error: "));
  EXPECT_THAT(answerOf({"run", kMusic, "musicVolume", "--params", "no JSON"}),
              testing::StartsWith("Error: "));
}

TEST_F(TheMusic, AnswersLaterWhenTheWorkTakesTime) {
  const json before = json::parse(answerOf({"state", kMusic}));

  const std::string result = answerOf({"run", kMusic, "musicNext"});

  const json after = json::parse(answerOf({"state", kMusic}));
  EXPECT_NE(after.at("title"), before.at("title"));
  EXPECT_EQ(result, "Playing " + std::string(after.at("title")) + "\n");
}

} // namespace
} // namespace integration
