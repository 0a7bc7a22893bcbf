// SPDX-License-Identifier: Apache-2.0
//
// norix::Assistant: what it registers, what its callables answer, and when it ends.
#include "VoiceTest.h"

#include <memory>

namespace {

using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::Error;

using AnAssistant = VoiceTest;

TEST_F(AnAssistant, AnswersForTheStateWithTheTextOfACallable) {
  voice->onState([] { return "{\"lamp\":\"on\"}"; });

  assistant.asksForState(7);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("{\"lamp\":\"on\"}", 7)}));
}

TEST_F(AnAssistant, AnswersForAnActionWithTheTextOfACallable) {
  voice->onAction("lampOff", [] { return std::string("The lamp is off"); });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("The lamp is off", 8)}));
}

TEST_F(AnAssistant, AnswersWithAViewIntoALongerText) {
  voice->onAction("lampOff", [] { return std::string_view("off and on").substr(0, 3); });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, TakesCallablesThatCaptureWhatCannotBeCopied) {
  voice->onAction("lampOff", [text = std::make_unique<std::string>("off")] { return *text; });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, TakesFunctions) {
  voice->onAction(
      "lampOff", +[] { return "off"; });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, SharesACallableAmongActions) {
  voice->onAction({"lampOn", "lampOff"}, [count = 0](norix::Request request) mutable {
    request.answer(request.actionId() + " " + std::to_string(++count));
  });

  assistant.asksForAction("lampOff", 8);
  assistant.asksForAction("lampOn", 9);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("lampOff 1", 8),
                                                   fake::actionAnswer("lampOn 2", 9)}));
}

TEST_F(AnAssistant, CallsTheCallableThatWasRegisteredLast) {
  voice->onAction("lampOff", [] { return "first"; });
  voice->onAction("lampOff", [] { return "second"; });
  voice->onState([] { return "first"; });
  voice->onState([] { return "second"; });

  assistant.asksForAction("lampOff", 8);
  assistant.asksForState(9);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("second", 8), fake::stateAnswer("second", 9)}));
}

TEST_F(AnAssistant, ForgetsTheState) {
  voice->onState([] { return "on"; });

  voice->forgetState();
  assistant.asksForState(9);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request callback not registered", 9)}));
}

TEST_F(AnAssistant, ForgetsAnAction) {
  voice->onAction("lampOff", [] { return "off"; });

  voice->forgetAction("lampOff");
  assistant.asksForAction("lampOff", 9);
  platform().clock.advance(0.2);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action Execution callback not registered", 9)}));
  expectLeft(fake::DeliberateLeak::ParkedBundle);
}

TEST_F(AnAssistant, DestroysItsCallablesAtItsEnd) {
  auto captured = std::make_shared<int>();
  voice->onState([captured] { return std::to_string(*captured); });
  voice->onAction({"lampOn", "lampOff"}, [captured] { return std::to_string(*captured); });
  ASSERT_GT(captured.use_count(), 1);

  voice.reset();

  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(AnAssistant, DestroysItsCallablesAlsoWhenARequestIsKept) {
  auto captured = std::make_shared<int>();
  voice->onAction("lampOff", [this, captured](norix::Request request) {
    const fake::OutsideLibrary outside;
    kept.push_back(std::move(request));
  });
  assistant.asksForAction("lampOff", 8);

  voice.reset();

  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(AnAssistant, MayBeDestroyedInsideItsOwnCallable) {
  auto captured = std::make_shared<int>();
  voice->onAction("exit", [this, captured] {
    voice.reset();
    return "gone " + std::to_string(captured.use_count());
  });

  assistant.asksForAction("exit", 8);

  EXPECT_EQ(captured.use_count(), 1);
  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  EXPECT_THAT(complaints(), testing::ElementsAre(testing::HasSubstr("nobody waits for it")));
}

TEST_F(AnAssistant, MayBeMadeAgainInsideItsOwnCallable) {
  voice->onAction("again", [this] {
    const fake::OutsideLibrary outside;
    voice.reset();
    voice.emplace();
    return "too late";
  });

  assistant.asksForAction("again", 8);

  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
}

TEST_F(AnAssistant, LetsACallableReplaceItself) {
  voice->onAction("toggle", [this, text = std::string("the first answer, too long for no heap")] {
    const fake::OutsideLibrary outside;
    voice->onAction("toggle", [] { return "second"; });
    return text;
  });

  assistant.asksForAction("toggle", 8);
  assistant.asksForAction("toggle", 9);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("the first answer, too long for no heap", 8),
                            fake::actionAnswer("second", 9)}));
}

TEST_F(AnAssistant, LetsACallableForgetItself) {
  voice->onAction("once", [this, text = std::string("an answer that needs the heap to live")] {
    voice->forgetAction("once");
    return text;
  });

  assistant.asksForAction("once", 8);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer("an answer that needs the heap to live", 8)}));
}

TEST_F(AnAssistant, GoesOnWhereItWasMovedTo) {
  voice->onAction("lampOff", [] { return "off"; });

  norix::Assistant moved = std::move(*voice);
  voice.reset();
  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, MayFollowOneThatIsGone) {
  voice.reset();
  voice.emplace();
  voice->onAction("lampOff", [] { return "off"; });
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();

  again.asksForAction("lampOff", 8);

  EXPECT_THAT(again.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, IsSilentWhenTheLibraryWasDeinitialisedInsideACallable) {
  voice->onAction("lampOff", [] {
    norix_deinitialize();
    return "off";
  });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), testing::IsEmpty());
  EXPECT_THAT(complaints(), testing::ElementsAre(testing::HasSubstr("could not be sent")));
}

// Exceptions.

TEST_F(AnAssistant, AnswersThatAnActionFailedWhenItsCallableThrows) {
  voice->onAction("lampOff", []() -> std::string { throw std::runtime_error("no current"); });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("lampOff failed", 8)}));
  EXPECT_THAT(complaints(), TextsAre({"'lampOff' failed with an exception: no current"}));
}

TEST_F(AnAssistant, AnswersThatTheStateFailedWhenItsCallableThrows) {
  voice->onState([]() -> std::string { throw 42; });

  assistant.asksForState(8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("getAppContext failed", 8)}));
  EXPECT_THAT(complaints(), TextsAre({"'getAppContext' failed with an exception: an exception that "
                                      "is not derived from std::exception"}));
}

TEST_F(AnAssistant, AnswersOnceWhenACallableThrowsWithItsRequest) {
  voice->answerIfForgotten("forgotten");
  voice->onAction("lampOff",
                  [](norix::Request /*request*/) { throw std::runtime_error("no current"); });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("lampOff failed", 8)}));
}

TEST_F(AnAssistant, AnswersOnceWhenACallableThrowsAfterItsAnswer) {
  voice->onAction("lampOff", [](norix::Request request) {
    request.answer("off");
    throw std::runtime_error("no current");
  });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("off", 8)}));
}

TEST_F(AnAssistant, AnswersOnceWhenACallableThrowsAfterKeepingItsRequest) {
  voice->onAction("lampOff", [this](norix::Request request) {
    const fake::OutsideLibrary outside;
    kept.push_back(std::move(request));
    throw std::runtime_error("no current");
  });

  assistant.asksForAction("lampOff", 8);

  EXPECT_EQ(kept.at(0).answer("off"), norix::Outcome::NobodyWaits);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("lampOff failed", 8)}));
}

TEST_F(AnAssistant, NoticesARequestThatWasLostInATryBlock) {
  voice->answerIfForgotten("Something went wrong");
  voice->onAction("lampOff", [](norix::Request request) {
    try {
      const norix::Request moved = std::move(request);
      throw std::runtime_error("no current");
    } catch (const std::runtime_error &) {
      // The application goes on as if nothing had happened.
    }
  });

  assistant.asksForAction("lampOff", 8);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("Something went wrong", 8)}));
}

// Failures.

Error errorOf(const std::function<void()> &attempt) {
  try {
    attempt();
  } catch (const Error &error) {
    return error;
  }
  return Error("nothing", NORIX_ERROR_NONE, "");
}

TEST_F(AnAssistant, IsTheOnlyOne) {
  const Error error = errorOf([] { const norix::Assistant second; });

  EXPECT_EQ(error.code(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_THAT(error.what(), testing::HasSubstr("there is an Assistant already"));
}

TEST_F(AnAssistant, RefusesAnIdThatIsEmpty) {
  const Error error = errorOf([this] { voice->onAction("", [] { return ""; }); });

  EXPECT_EQ(error.code(), NORIX_ERROR_INVALID_PARAMETER);
}

TEST_F(AnAssistant, RefusesAnIdThatCWouldCut) {
  const Error error =
      errorOf([this] { voice->onAction(std::string_view("lamp\0Off", 8), [] { return ""; }); });

  EXPECT_EQ(error.code(), NORIX_ERROR_INVALID_PARAMETER);
}

TEST_F(AnAssistant, RefusesTheIdThatMeansTheState) {
  const Error error = errorOf([this] { voice->onAction("getAppContext", [] { return ""; }); });

  EXPECT_EQ(error.code(), NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_THAT(error.advice(), testing::HasSubstr("onState()"));
}

TEST_F(AnAssistant, RefusesToRegisterOnAnotherThread) {
  onAnotherThread([this] {
    const Error error = errorOf([this] { voice->onAction("lampOff", [] { return ""; }); });

    EXPECT_EQ(error.function(), "norix_set_action_execution_cb");
    EXPECT_THAT(error.advice(), testing::HasSubstr("main loop's thread"));
  });
}

TEST_F(AnAssistant, SaysThatTheLibraryWasDeinitialisedBehindItsBack) {
  norix_deinitialize();

  const Error error = errorOf([this] { voice->onAction("lampOff", [] { return ""; }); });

  EXPECT_EQ(error.function(), "norix_set_action_execution_cb");
  EXPECT_EQ(error.code(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_THAT(error.advice(), testing::HasSubstr("norix_deinitialize()"));
}

TEST_F(AnAssistant, RefusesToRegisterWhenItWasMovedFrom) {
  const norix::Assistant moved = std::move(*voice);

  const Error error = errorOf([this] { voice->onState([] { return ""; }); });

  EXPECT_THAT(error.advice(), testing::HasSubstr("moved from"));
}

TEST_F(AnAssistant, KeepsTheFirstCallableWhenTheSecondCannotBeRegistered) {
  voice->onAction("lampOff", [] { return "first"; });
  platform().faults.fail(fake::kNothrowNew);

  const Error error = errorOf([this] { voice->onAction("lampOff", [] { return "second"; }); });
  assistant.asksForAction("lampOff", 8);

  EXPECT_EQ(error.code(), NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("first", 8)}));
}

class AnAssistantToBe : public fake::LibraryTest {};

TEST_F(AnAssistantToBe, SaysWhatToDoWithoutAnSdkVersion) {
  platform().application.metadata.clear();

  const Error error = errorOf([] { const norix::Assistant made; });

  EXPECT_EQ(error.function(), "norix_initialize");
  EXPECT_EQ(error.code(), NORIX_ERROR_NOT_SUPPORTED);
  EXPECT_THAT(error.advice(), testing::HasSubstr(NORIX_SDK_VERSION_METADATA_KEY));
  EXPECT_THAT(error.what(),
              testing::StartsWith("norix_initialize failed with "
                                  "NORIX_ERROR_NOT_SUPPORTED (-1073741822): declare"));
}

TEST_F(AnAssistantToBe, SaysWhatToDoWithoutAnApplicationId) {
  platform().application.id.reset();

  const Error error = errorOf([] { const norix::Assistant made; });

  EXPECT_EQ(error.function(), "norix_initialize");
  EXPECT_THAT(error.advice(), testing::HasSubstr("application id"));
}

TEST_F(AnAssistantToBe, SaysWhatToDoWhenThePortIsTaken) {
  platform().faults.fail("rpc_port_stub_listen");
  expectLeft(fake::DeliberateLeak::StubOfFailedInitialise);

  const Error error = errorOf([] { const norix::Assistant made; });

  EXPECT_EQ(error.code(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_THAT(error.advice(), testing::HasSubstr("port"));
}

TEST_F(AnAssistantToBe, IsMadeOnceTheReasonOfAFailureIsGone) {
  platform().faults.fail("rpc_port_stub_listen");
  expectLeft(fake::DeliberateLeak::StubOfFailedInitialise);
  errorOf([] { const norix::Assistant made; });

  EXPECT_EQ(errorOf([] { const norix::Assistant made; }).code(), NORIX_ERROR_NONE);
}

TEST_F(AnAssistantToBe, IsCreatedWithoutExceptions) {
  norix::Result<norix::Assistant> created = norix::Assistant::create();

  ASSERT_TRUE(created);
  EXPECT_EQ(created.error(), nullptr);
  created.value()->onState([] { return "on"; });
}

TEST_F(AnAssistantToBe, FailsToBeCreatedWithAnError) {
  platform().application.metadata.clear();

  const norix::Result<norix::Assistant> created = norix::Assistant::create();

  ASSERT_FALSE(created);
  EXPECT_EQ(created.value(), nullptr);
  EXPECT_EQ(created.error()->code(), NORIX_ERROR_NOT_SUPPORTED);
}

TEST_F(AnAssistantToBe, CallsNothingOfTheLibraryForDeclarations) {
  norix::Assistant declaring = norix::Assistant::declaring();

  declaring.onState([] { return "on"; });
  declaring.onAction("lampOff", [] { return "off"; });

  EXPECT_THAT(platform().journal.calls(), testing::IsEmpty());
}

} // namespace
