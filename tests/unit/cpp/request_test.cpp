// SPDX-License-Identifier: Apache-2.0
//
// norix::Request: answered once, by its holder, and never in place of another request.
#include "VoiceTest.h"

namespace {

using fake::DeliberateLeak;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::Outcome;

class ARequest : public VoiceTest {
protected:
  void SetUp() override {
    VoiceTest::SetUp();
    keepsRequestsOf("play");
    keepsRequestsOf("pause");
    voice->onState([this](norix::Request request) {
      const fake::OutsideLibrary outside;
      kept.push_back(std::move(request));
    });
  }
};

TEST_F(ARequest, IsAnsweredLater) {
  assistant.asksForAction("play", 1);
  EXPECT_TRUE(kept.at(0).isCurrent());

  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::Sent);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Playing", 1)}));
}

TEST_F(ARequest, ForTheStateIsAnsweredLater) {
  assistant.asksForState(1);

  EXPECT_EQ(kept.at(0).answer(std::string("on")), Outcome::Sent);

  EXPECT_EQ(kept.at(0).actionId(), "getAppContext");
  EXPECT_EQ(kept.at(0).params(), "");
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("on", 1)}));
}

TEST_F(ARequest, IsAnsweredThroughTheObjectThatItWasMovedTo) {
  assistant.asksForAction("play", 1);

  norix::Request moved = std::move(kept.at(0));
  EXPECT_EQ(answer(moved, "Playing"), Outcome::Sent);

  EXPECT_EQ(answer(kept.at(0), "Playing again"), Outcome::Spent);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Playing", 1)}));
}

TEST_F(ARequest, KeepsItsParametersWhenTheBundleIsGone) {
  fake::Contents request = fake::actionRequest("play", 1);
  request.at(2) = fake::text("actionParams", R"({"title":"Morning Walk"})");
  assistant.sends(request);

  EXPECT_EQ(kept.at(0).params(), R"({"title":"Morning Walk"})");
  EXPECT_EQ(kept.at(0).actionId(), "play");
}

TEST_F(ARequest, HasParametersOfItsOwnWhateverCameBefore) {
  const std::string longer(100, 'x');
  const std::string shorter(50, 'y');
  fake::Contents request = fake::actionRequest("play", 1);
  for (const std::string &params : {longer, shorter, std::string("{}"), shorter}) {
    request.at(2) = fake::text("actionParams", params);
    assistant.sends(request);
    if (params == longer) {
      kept.clear();
    }
  }

  EXPECT_EQ(kept.at(0).params(), shorter);
  EXPECT_EQ(kept.at(1).params(), "{}");
  EXPECT_EQ(kept.at(2).params(), shorter);
}

TEST_F(ARequest, WithoutParametersHasEmptyOnes) {
  assistant.sends({fake::text("actionId", "play"), fake::id("requestId", 1)});

  EXPECT_EQ(kept.at(0).params(), "");
}

TEST_F(ARequest, IsNotAnsweredTwice) {
  assistant.asksForAction("play", 1);
  answer(kept.at(0), "Playing");

  EXPECT_EQ(answer(kept.at(0), "Playing again"), Outcome::Spent);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Playing", 1)}));
  EXPECT_THAT(complaints(), TextsAre({"'play': the answer was refused: this request was answered "
                                      "before, or moved from"}));
}

TEST_F(ARequest, IsNotCurrentOnceItIsAnswered) {
  assistant.asksForAction("play", 1);

  answer(kept.at(0), "Playing");

  EXPECT_FALSE(kept.at(0).isCurrent());
}

// What makes a request one that nobody waits for.
struct Replacement {
  const char *name;
  void (*happens)(fake::Assistant &assistant);
  std::optional<DeliberateLeak> leaves = std::nullopt;
};

void PrintTo(const Replacement &replacement, std::ostream *out) {
  *out << replacement.name;
}

class AReplacedRequest : public ARequest, public testing::WithParamInterface<Replacement> {};

TEST_P(AReplacedRequest, IsNeitherCurrentNorAnswered) {
  if (GetParam().leaves.has_value()) {
    expectLeft(*GetParam().leaves);
  }
  assistant.asksForAction("play", 1);
  GetParam().happens(assistant);
  const auto before = assistant.responses();

  EXPECT_FALSE(kept.at(0).isCurrent());
  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::NobodyWaits);

  EXPECT_EQ(assistant.responses(), before);
  EXPECT_THAT(complaints(),
              testing::ElementsAre(testing::HasSubstr("'play': the answer was dropped")));
}

INSTANTIATE_TEST_SUITE_P(
    , AReplacedRequest,
    testing::Values(
        Replacement{"ByAnotherAction",
                    [](auto &assistant) { assistant.asksForAction("pause", 2); }},
        Replacement{"ByTheSameAction", [](auto &assistant) { assistant.asksForAction("play", 2); }},
        Replacement{"ByOneWithTheSameId",
                    [](auto &assistant) { assistant.asksForAction("play", 1); }},
        Replacement{"ByAStateRequest", [](auto &assistant) { assistant.asksForState(2); },
                    DeliberateLeak::StateTimer},
        Replacement{"ByAnActionThatNobodyRegistered",
                    [](auto &assistant) { assistant.asksForAction("unknown", 2); },
                    DeliberateLeak::ParkedBundle},
        Replacement{"ByTheTimeOut", [](auto &) { platform().clock.advance(31); }},
        // The library has a hundred handles: this one comes round again.
        Replacement{"ByAHundredOthers",
                    [](auto &assistant) {
                      for (uint64_t id = 2; id <= 101; ++id) {
                        assistant.asksForAction("pause", id);
                      }
                    }},
        Replacement{"ByAHundredOthersThatWereAnsweredInC",
                    [](auto &assistant) {
                      norix_set_action_execution_cb(
                          "inC", [](void *, bundle *, void *) {}, nullptr);
                      for (uint64_t id = 2; id <= 101; ++id) {
                        assistant.asksForAction("inC", id);
                      }
                    }}),
    [](const auto &tested) { return tested.param.name; });

TEST_F(ARequest, IsNotTakenForTheOneThatReplacedIt) {
  assistant.asksForAction("play", 1);
  assistant.asksForAction("pause", 2);

  kept.at(0).answer("Playing");
  EXPECT_EQ(kept.at(1).answer("Paused"), Outcome::Sent);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Paused", 2)}));
}

TEST_F(ARequest, FailsWhenTheAssistantIsGone) {
  assistant.asksForAction("play", 1);
  assistant.disconnects();
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);

  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::Failed);

  EXPECT_THAT(complaints(), testing::ElementsAre(testing::HasSubstr("could not be sent")));
}

TEST_F(ARequest, OutlivesItsAssistantObjectHarmlessly) {
  assistant.asksForAction("play", 1);

  voice.reset();

  EXPECT_FALSE(kept.at(0).isCurrent());
  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::NobodyWaits);
}

TEST_F(ARequest, IsNobodysWhenTheAssistantObjectWasMadeAgain) {
  assistant.asksForAction("play", 1);
  voice.reset();
  voice.emplace();
  keepsRequestsOf("play");
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();
  again.asksForAction("play", 1);

  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::NobodyWaits);

  EXPECT_THAT(again.responses(), testing::IsEmpty());
  EXPECT_TRUE(kept.at(1).isCurrent());
}

// Before the action was registered.

class AnEarlyRequest : public VoiceTest {
protected:
  void arrives() {
    expectLeft(DeliberateLeak::ParkedBundle);
    assistant.asksForAction("play", 1);
  }
};

TEST_F(AnEarlyRequest, SaysThatItCannotBeAnswered) {
  arrives();
  keepsRequestsOf("play");
  platform().clock.advance(0.02);

  ASSERT_EQ(kept.size(), 1U);
  EXPECT_FALSE(kept.at(0).canBeAnswered());
  EXPECT_FALSE(kept.at(0).isCurrent());
  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::CannotBeAnswered);
  EXPECT_FALSE(kept.at(0).canBeAnswered());
  EXPECT_THAT(complaints(),
              testing::ElementsAre(testing::HasSubstr("arrived before the action was registered")));
}

TEST_F(AnEarlyRequest, IsExecuted) {
  arrives();
  int executed = 0;
  voice->onAction("play", [&executed] {
    ++executed;
    return "Playing";
  });
  platform().clock.advance(0.02);

  EXPECT_EQ(executed, 1);
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  EXPECT_THAT(complaints(), testing::ElementsAre(testing::HasSubstr("cannot be answered")));
}

TEST_F(AnEarlyRequest, FollowedByOthersIsNotTakenForThem) {
  arrives();
  keepsRequestsOf("play");
  platform().clock.advance(0.02);
  assistant.asksForAction("play", 2);

  EXPECT_TRUE(kept.at(1).canBeAnswered());
  EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::CannotBeAnswered);
  EXPECT_EQ(kept.at(1).answer("Playing"), Outcome::Sent);
}

// Destroyed without an answer.

TEST_F(ARequest, SaysThatItWasForgotten) {
  assistant.asksForAction("play", 1);

  kept.clear();

  EXPECT_THAT(complaints(), TextsAre({"'play': the request was destroyed without an answer"}));
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
}

TEST_F(ARequest, IsAnsweredWithTheTextOfItsOwnWhenItIsForgotten) {
  voice->answerIfForgotten("Something went wrong");
  assistant.asksForAction("play", 1);
  kept.at(0).answerIfForgotten("Nothing was played");

  kept.clear();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Nothing was played", 1)}));
}

TEST_F(ARequest, IsAnsweredWithTheTextOfAllWhenItIsForgotten) {
  voice->answerIfForgotten("Something went wrong");
  assistant.asksForState(1);

  kept.clear();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("Something went wrong", 1)}));
}

TEST_F(ARequest, ThatIsOverwrittenIsForgotten) {
  assistant.asksForAction("play", 1);
  kept.at(0).answerIfForgotten("Nothing was played");
  assistant.asksForAction("pause", 2);
  kept.at(1).answerIfForgotten("Nothing was paused");
  norix::Request last = std::move(kept.at(1));

  last = std::move(kept.at(0));

  EXPECT_EQ(last.actionId(), "play");
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Nothing was paused", 2)}));
}

TEST_F(ARequest, IsNotMissedWhenNobodyWaits) {
  voice->answerIfForgotten("Something went wrong");
  assistant.asksForAction("play", 1);
  assistant.asksForAction("pause", 2);

  kept.erase(kept.begin());

  EXPECT_THAT(complaints(), testing::IsEmpty());
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
}

TEST_F(ARequest, ThatIsAnsweredIsNotForgotten) {
  assistant.asksForAction("play", 1);
  answer(kept.at(0), "Playing");

  kept.clear();

  EXPECT_THAT(complaints(), testing::IsEmpty());
}

// From another thread.

TEST_F(ARequest, IsAnsweredFromAnotherThread) {
  assistant.asksForAction("play", 1);

  onAnotherThread([this] { EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::OnItsWay); });
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  EXPECT_EQ(fake::runCallsOfThreads(), 1U);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Playing", 1)}));
}

TEST_F(ARequest, ThatIsReplacedWhileItsAnswerIsOnItsWayIsNotAnswered) {
  assistant.asksForAction("play", 1);
  onAnotherThread([this] { EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::OnItsWay); });

  assistant.asksForAction("pause", 2);
  fake::runCallsOfThreads();

  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  EXPECT_TRUE(kept.at(1).isCurrent());
}

TEST_F(ARequest, ThatWasReplacedIsRefusedOnAnotherThread) {
  assistant.asksForAction("play", 1);
  assistant.asksForAction("pause", 2);

  onAnotherThread([this] {
    EXPECT_FALSE(kept.at(0).isCurrent());
    EXPECT_TRUE(kept.at(1).isCurrent());
    EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::NobodyWaits);
  });

  EXPECT_EQ(fake::runCallsOfThreads(), 0U);
}

TEST_F(ARequest, IsAnsweredWhenTheAssistantObjectEndsAfterTheAnswerWasGiven) {
  assistant.asksForAction("play", 1);
  onAnotherThread([this] { EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::OnItsWay); });

  voice.reset();
  fake::runCallsOfThreads();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Playing", 1)}));
}

TEST_F(ARequest, IsRefusedOnAnotherThreadWhenTheAssistantObjectIsGone) {
  assistant.asksForAction("play", 1);
  voice.reset();

  onAnotherThread([this] { EXPECT_EQ(kept.at(0).answer("Playing"), Outcome::NobodyWaits); });

  EXPECT_EQ(fake::runCallsOfThreads(), 0U);
}

TEST_F(ARequest, ThatIsForgottenOnAnotherThreadIsAnsweredAllTheSame) {
  voice->answerIfForgotten("Something went wrong");
  assistant.asksForAction("play", 1);

  onAnotherThread([this] { kept.clear(); });
  fake::runCallsOfThreads();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Something went wrong", 1)}));
}

TEST_F(ARequest, IsAnsweredAlsoWhenTheMainLoopLostAnEarlierCall) {
  assistant.asksForAction("play", 1);
  onAnotherThread([this] { kept.at(0).answer("Playing"); });
  fake::dropCallsOfThreads();
  voice.reset();
  voice.emplace();
  keepsRequestsOf("play");
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();
  again.asksForAction("play", 2);

  onAnotherThread([this] { kept.back().answer("Playing again"); });
  fake::runCallsOfThreads();

  EXPECT_THAT(again.responses(), ResponsesAre({fake::actionAnswer("Playing again", 2)}));
}

} // namespace
