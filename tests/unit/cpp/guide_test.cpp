// SPDX-License-Identifier: Apache-2.0
//
// The code of docs/writing-callbacks.md, as it stands there, in both languages: what the page says
// is what the assistant gets.
#include "VoiceTest.h"

extern "C" {
bool start_lamp(bool *lamp);
int register_next(void);
int register_count(pthread_t *thread);
int register_volume(int *volume);
bool somebody_waits(void *request);
}

norix::Assistant startLamp(bool &lamp);
void registerNext(norix::Assistant &assistant);
void registerCount(norix::Assistant &assistant, std::thread &thread);
void registerVolume(norix::Assistant &assistant, int &volume);
void registerEject(norix::Assistant &assistant);
bool somebodyWaits(const norix::Request &request);

namespace {

using fake::platform;
using fake::ResponsesAre;

enum class Language { C, Cpp };

class TheGuide : public VoiceTest, public testing::WithParamInterface<Language> {
protected:
  static bool isInC() { return GetParam() == Language::C; }

  std::string resultOf(const std::string &actionId, const std::string &params) {
    fake::Contents request = fake::actionRequest(actionId, 1);
    request.at(2) = fake::text("actionParams", params);
    assistant.sends(request);
    return assistant.responses().back().at(1).values.at(0);
  }
};

TEST_P(TheGuide, StartsALamp) {
  bool lamp = true;
  voice.reset();
  if (isInC()) {
    ASSERT_TRUE(start_lamp(&lamp));
  } else {
    voice = startLamp(lamp);
  }
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();

  again.asksForState(1);
  again.asksForAction("lampOff", 2);
  again.asksForState(3);

  EXPECT_THAT(again.responses(),
              ResponsesAre({fake::stateAnswer("on", 1), fake::actionAnswer("The lamp is off", 2),
                            fake::stateAnswer("off", 3)}));
}

TEST_P(TheGuide, AnswersLater) {
  isInC() ? static_cast<void>(register_next()) : registerNext(*voice);

  assistant.asksForAction("musicNext", 1);
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  platform().clock.advance(0.5);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("Playing the next track", 1)}));
}

TEST_P(TheGuide, AnswersAlsoWhenThereIsNoTimer) {
  isInC() ? static_cast<void>(register_next()) : registerNext(*voice);
  // The library's own timer comes first.
  platform().faults.fail("ecore_timer_add", 2);

  assistant.asksForAction("musicNext", 1);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer(
                  isInC() ? "The next track cannot be loaded" : "musicNext failed", 1)}));
}

TEST_P(TheGuide, WorksOnAThread) {
  pthread_t inC = {};
  std::thread inCpp;
  isInC() ? static_cast<void>(register_count(&inC)) : registerCount(*voice, inCpp);

  assistant.asksForAction("musicCount", 1);
  isInC() ? static_cast<void>(pthread_join(inC, nullptr)) : inCpp.join();
  fake::runCallsOfThreads();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("There are 42 songs", 1)}));
}

TEST_P(TheGuide, TakesParameters) {
  int volume = 0;
  isInC() ? static_cast<void>(register_volume(&volume)) : registerVolume(*voice, volume);

  EXPECT_EQ(resultOf("musicVolume", R"({"volume":40})"), "The volume is set");
  EXPECT_EQ(volume, 40);
  EXPECT_THAT(resultOf("musicVolume", R"({"volume":101})"), testing::StartsWith("Error: "));
  EXPECT_THAT(resultOf("musicVolume", R"({"volume":"loud"})"), testing::StartsWith("Error: "));
  EXPECT_THAT(resultOf("musicVolume", "loud"), testing::StartsWith("Error: "));
  EXPECT_EQ(volume, 40);
}

TEST_P(TheGuide, FindsOutWhetherSomebodyWaits) {
  const auto waits = [this] {
    return isInC() ? somebody_waits(app.actionRequests.at(0).handle) : somebodyWaits(kept.at(0));
  };
  isInC() ? static_cast<void>(app.registersFor("play")) : keepsRequestsOf("play");
  assistant.asksForAction("play", 1);

  EXPECT_TRUE(waits());
  assistant.asksForAction("play", 2);
  EXPECT_FALSE(waits());
}

INSTANTIATE_TEST_SUITE_P(, TheGuide, testing::Values(Language::C, Language::Cpp),
                         [](const auto &tested) {
                           return tested.param == Language::C ? "InC" : "InCpp";
                         });

class TheGuideInCpp : public VoiceTest {};

TEST_F(TheGuideInCpp, GivesUpWithAnException) {
  registerEject(*voice);

  assistant.asksForAction("discEject", 1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("discEject failed", 1)}));
  EXPECT_THAT(complaints(),
              fake::TextsAre({"'discEject' failed with an exception: the tray is stuck"}));
}

TEST_F(TheGuideInCpp, SaysWhatIsWrongWithAParameter) {
  int volume = 0;
  registerVolume(*voice, volume);
  fake::Contents request = fake::actionRequest("musicVolume", 1);
  request.at(2) = fake::text("actionParams", R"({"volume":"loud"})");

  assistant.sends(request);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("Error: \"volume\" of musicVolume has to be a whole "
                                               "number from 0 to 100, not \"loud\"",
                                               1)}));
}

} // namespace
