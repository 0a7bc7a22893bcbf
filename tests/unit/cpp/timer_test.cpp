// SPDX-License-Identifier: Apache-2.0
//
// norix::Timer: calls once, later, and drops what nobody wants any more.
#include "VoiceTest.h"

#include <stdexcept>

namespace {

using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;

class ATimer : public VoiceTest {
protected:
  void TearDown() override {
    timer.reset();
    VoiceTest::TearDown();
  }

  std::optional<norix::Timer> timer{std::in_place};
  int calls = 0;
};

TEST_F(ATimer, CallsOnceWhenItsTimeHasCome) {
  timer->start(0.5, [this] { ++calls; });

  platform().clock.advance(0.4);
  EXPECT_EQ(calls, 0);
  platform().clock.advance(10);
  EXPECT_EQ(calls, 1);
}

TEST_F(ATimer, AnswersARequestThatWasMovedIntoIt) {
  voice->onAction("next", [this](norix::Request request) {
    const fake::OutsideLibrary outside;
    timer->start(0.5, [request = std::move(request)]() mutable { request.answer("Rain on Tin"); });
  });
  assistant.asksForAction("next", 1);

  platform().clock.advance(1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Rain on Tin", 1)}));
}

// What is done to a timer that waits, and how often it calls then.
struct Treatment {
  const char *name;
  void (*apply)(std::optional<norix::Timer> &timer, norix::Timer &other);
  int calls;
};

class AWaitingTimer : public ATimer, public testing::WithParamInterface<Treatment> {};

TEST_P(AWaitingTimer, CallsAsOftenAsItWasLeftTo) {
  norix::Timer other;
  timer->start(0.5, [this] { ++calls; });

  GetParam().apply(timer, other);
  platform().clock.advance(1);

  EXPECT_EQ(calls, GetParam().calls);
}

constexpr Treatment kTreatments[] = {
    {"Stopped", [](std::optional<norix::Timer> &timer, norix::Timer &) { timer->stop(); }, 0},
    {"Destroyed", [](std::optional<norix::Timer> &timer, norix::Timer &) { timer.reset(); }, 0},
    {"StartedAnew",
     [](std::optional<norix::Timer> &timer, norix::Timer &) { timer->start(0.1, [] {}); }, 0},
    {"MovedAway",
     [](std::optional<norix::Timer> &timer, norix::Timer &other) { other = std::move(*timer); }, 1},
    {"MovedOver",
     [](std::optional<norix::Timer> &timer, norix::Timer &other) { *timer = std::move(other); }, 0},
};

INSTANTIATE_TEST_SUITE_P(Treatments, AWaitingTimer, testing::ValuesIn(kTreatments),
                         [](const auto &treated) { return std::string(treated.param.name); });

TEST_F(ATimer, DropsARequestWithItsForgottenAnswer) {
  voice->answerIfForgotten("The title was not loaded");
  voice->onAction("next", [this](norix::Request request) {
    const fake::OutsideLibrary outside;
    timer->start(0.5, [request = std::move(request)]() mutable { request.answer("Rain on Tin"); });
  });
  assistant.asksForAction("next", 1);

  timer->stop();

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("The title was not loaded", 1)}));
}

TEST_F(ATimer, MayBeDestroyedByWhatItCalls) {
  timer->start(0.5, [this] {
    timer.reset();
    ++calls;
  });

  platform().clock.advance(1);

  EXPECT_EQ(calls, 1);
}

TEST_F(ATimer, MayBeStartedAnewByWhatItCalls) {
  timer->start(0.5, [this] {
    ++calls;
    timer->start(0.5, [this] { ++calls; });
  });

  platform().clock.advance(1);

  EXPECT_EQ(calls, 2);
}

TEST_F(ATimer, LogsAnException) {
  timer->start(0.5, [] { throw std::runtime_error("the disc is stuck"); });

  platform().clock.advance(1);

  EXPECT_THAT(complaints(),
              TextsAre({"what a timer called failed with an exception: the disc is stuck"}));
}

TEST_F(ATimer, ThatCannotBeStartedIsAnError) {
  voice->onAction("next", [this](norix::Request request) {
    timer->start(0.5, [request = std::move(request)]() mutable { request.answer("Rain on Tin"); });
  });
  platform().faults.fail("ecore_timer_add", 2); // The first is the library's own.

  assistant.asksForAction("next", 1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("next failed", 1)}));
  EXPECT_THAT(complaints(), testing::Contains(testing::HasSubstr("norix::Timer::start")));
}

} // namespace
