// SPDX-License-Identifier: Apache-2.0
//
// Requests that arrive before their callback is registered.
#include "EarlyRequest.h"
#include "logFile.h"

#include "NorixImpl/NorixCommonData.h"

#include <norix.h>

#include <ostream>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::library;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::ActionRequestImpl;
using norix::NorixCommonData;
using testing::IsEmpty;

TEST_F(AnEarlyRequest, IsParkedAndRetried) {
  const fake::FakeTimer timer = platform().clock.alive()[0];

  EXPECT_EQ(timer.interval, 0.02);
  EXPECT_EQ(timer.data, object());
  EXPECT_THAT(logLines().back(), IsLine(kFile, "receiveRequest",
                                        "There is no matching action execution callback, waiting "
                                        "for sometime to see if reg can happen"));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, DrawsNoHandle) {
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 1);
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  EXPECT_EQ(NorixCommonData::_instance->_norixClientAppId, fake::kAssistantId);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsDeliveredByTheTickAfterTheRegistration) {
  ticks(2);
  EXPECT_THAT(app.actionRequests, IsEmpty());
  platform().clock.advance(0.01); // 0.05 s
  app.registersFor("play");

  platform().clock.advance(0.01);

  ASSERT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(app.actionRequests[0].params, fake::actionRequest("play", 42));
  EXPECT_STREQ(static_cast<const char *>(app.actionRequests[0].handle), "play");
  expectLeft(DeliberateLeak::ParkedBundle);
}

struct Delivered {
  void *handle;
  bundle *params;
};

void noteDelivery(void *handle, bundle *params, void *delivered) {
  *static_cast<Delivered *>(delivered) = {handle, params};
}

TEST_F(AnEarlyRequest, IsDeliveredAsItsCopyAndTheActionIdInIt) {
  Delivered delivered = {nullptr, nullptr};
  char *actionId = nullptr;
  norix_set_action_execution_cb("play", noteDelivery, &delivered);

  ticks(1);

  bundle_get_str(delivered.params, "actionId", &actionId);
  EXPECT_EQ(delivered.handle, actionId);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsDeliveredByTheFifthTickAtTheLatest) {
  ticks(4);
  app.registersFor("play");

  ticks(1);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsLoggedWhenItIsDelivered) {
  ticks(1);
  app.registersFor("play");
  forgetCalls();

  ticks(1);

  ASSERT_EQ(log().size(), 2U);
  EXPECT_THAT(logLines()[0], isTickLine(kTick));
  EXPECT_EQ(logLines()[1].function, kTickFunction);
  EXPECT_EQ(logLines()[1].format, "%s %s %s(%d): Found execute action Id: %s  Callback: %p");
  EXPECT_THAT(log()[1], testing::StartsWith("Found execute action Id: play  Callback: 0x"));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, StartsTheThirtySecondsWithItsDelivery) {
  std::vector<fake::FakeTimer> timers;
  app.registersFor("play");
  app.onAction = [&timers](const auto &) { timers = platform().clock.alive(); };

  ticks(1);

  ASSERT_EQ(timers.size(), 2U); // the tick's own ends when its callback returns
  EXPECT_EQ(timers[1].interval, 30.0);
  EXPECT_EQ(timers[1].data, object());
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, DrawsNoHandleWhenItIsDelivered) {
  app.registersFor("play");

  ticks(1);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 1);
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, CannotBeAnsweredAndTimesOut) {
  app.registersFor("play");
  ticks(1);
  forgetCalls();

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  // "play", read as a number.
  EXPECT_EQ(log().back(), "Couldn't find requestId corresponding to actionHandler 2036427888");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  platform().clock.advance(30);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action execution request timed out", 42)}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

// The handle of a late request is a text. One shorter than an int is read up to its end, and zeros
// stand for the rest.
struct ShortId {
  const char *name;
  std::string actionId;
  int number;
};

void PrintTo(const ShortId &row, std::ostream *out) {
  *out << row.name;
}

class AnEarlyRequestOfAShortId : public fake::ReadyLibraryTest,
                                 public testing::WithParamInterface<ShortId> {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    isDeliveredLate(GetParam().actionId);
    expectLeft(DeliberateLeak::ParkedBundle);
    forgetCalls();
  }
  void isDeliveredLate(const std::string &actionId) {
    assistant.asksForAction(actionId, 42);
    app.registersFor(actionId);
    platform().clock.advance(0.02);
  }
  static std::string notFound() {
    return "Couldn't find requestId corresponding to actionHandler "
           + std::to_string(GetParam().number);
  }
};

TEST_P(AnEarlyRequestOfAShortId, IsReadUpToItsEndByAnAnswer) {
  void *const handle = app.actionRequests.back().handle;

  EXPECT_EQ(norix_complete_action_execution(handle, "result"), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_complete_app_state_request(handle, "state"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({notFound(), notFound()}));
}

TEST_P(AnEarlyRequestOfAShortId, IsReadUpToItsEndAlsoAfterOtherLateRequests) {
  void *const handle = app.actionRequests.back().handle;
  isDeliveredLate("yz");
  isDeliveredLate("z");
  expectLeft(DeliberateLeak::ParkedBundle, 2);
  app.registersForState();
  assistant.asksForState(43); // With an entry to be found, the handle is read.
  char *actionId = nullptr;
  forgetCalls();

  EXPECT_EQ(norix_get_action_name(handle, &actionId), NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(norix_complete_action_execution(handle, "result"), NORIX_ERROR_NONE);

  EXPECT_EQ(log().back(), notFound());
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
}

INSTANTIATE_TEST_SUITE_P(
    , AnEarlyRequestOfAShortId,
    testing::Values(ShortId{"ThatIsEmpty", "", 0}, ShortId{"OfOneLetter", "a", 'a'},
                    ShortId{"OfTwoLetters", "ab", 'a' | 'b' << 8},
                    ShortId{"OfThreeLetters", "abc", 'a' | 'b' << 8 | 'c' << 16}),
    [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(AnEarlyRequest, IsGivenUpByTheSixthTick) {
  ticks(5);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  app.registersFor("play");

  ticks(1);

  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_THAT(
      assistant.callbacks(),
      ParcelsAre({fake::callback(
          {}, fake::kAppId, fake::actionFailure("Action Execution callback not registered", 42))}));
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsLoggedWhenItIsGivenUp) {
  ticks(5);
  forgetCalls();

  ticks(1);

  EXPECT_THAT(
      logLines(),
      LinesAre(
          {isTickLine(kTick), isTickLine("There is no matching action execution callback."),
           IsLine(kFile, "sendResponse", "App Id %s", "App Id org.example.music"),
           IsLine(kFile, kTickFunction, "send reponse result: %d", "send reponse result: 0")}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, HasNoTimerAnyMoreWhenItWasGivenUp) {
  ticks(6);
  platform().journal.clear();

  assistant.asksForState(43);

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)"}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, LogsEveryTick) {
  forgetCalls();

  ticks(5);

  EXPECT_THAT(log(), TextsAre({kTick, kTick, kTick, kTick, kTick}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, LogsTheResultOfAFailedDelivery) {
  assistant.unregisters();

  ticks(6);

  EXPECT_THAT(log().back(), "send reponse result: -1073741825");
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsGivenUpWithoutAWordToTheAssistantWhenThereIsNoBundle) {
  ticks(5);
  forgetCalls();
  platform().faults.fail("bundle_create");

  ticks(1);

  EXPECT_THAT(logLines().back(), isTickLine("bundle_create is failed"));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsLookedUpAfreshByEveryTick) {
  app.registersFor("play");
  norix_unset_action_execution_cb("play");

  ticks(5);

  EXPECT_THAT(app.actionRequests, IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsAbandonedByTheNextRequest) {
  assistant.asksForAction("stop", 43);
  app.registersFor("play");
  app.registersFor("stop");

  ticks(1);

  ASSERT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(app.actionRequests[0].params, fake::actionRequest("stop", 43));
  expectLeft(DeliberateLeak::ParkedBundle); // of the second alone
}

TEST_F(AnEarlyRequest, CountsItsTicksFromItsOwnArrival) {
  ticks(5);
  assistant.asksForAction("play", 43);

  ticks(5);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  ticks(1);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action Execution callback not registered", 43)}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, NeverFiresAfterDeinitialisation) {
  app.deinitialises();
  forgetCalls();

  platform().clock.advance(kLong);

  EXPECT_THAT(log(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, IsNeitherParkedNorAnsweredWhileAnotherIs) {
  forgetCalls();
  bundle *second = platform().bundles.create(fake::actionRequest("stop", 43));

  library([second] {
    ActionRequestImpl::getInstance()->receiveRequest(fake::kAssistantId, "stop", second);
    return 0;
  });

  EXPECT_EQ(log().size(), 1U);
  EXPECT_THAT(calls({"bundle_create", "ecore_timer_add"}), IsEmpty());
  bundle_free(second);
  expectLeft(DeliberateLeak::ParkedBundle);
}

// The request counts as delivered before the application hears of it: whatever the application does
// in its callback meets no waiting request.
TEST_F(AnEarlyRequest, KeepsItsCopyWhenAnotherRequestArrivesInItsCallback) {
  size_t bundles = 0;
  app.registersFor("play");
  app.onAction = [&](const auto &) {
    const size_t before = platform().bundles.alive();
    forgetCalls();
    assistant.asksForState(43);
    bundles = before - platform().bundles.alive();
    // The waits of the request before: none for the state, and the callback's own.
    EXPECT_EQ(calls({"ecore_timer_del"}).size(), 2U);
  };

  ticks(1);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(bundles, 0U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, MakesRoomForAnotherThatArrivesInItsCallback) {
  app.registersFor("play");
  app.onAction = [this](const auto &) {
    app.onAction = nullptr;
    assistant.asksForAction("stop", 43);
  };

  ticks(1);
  app.registersFor("stop");
  ticks(1);

  ASSERT_EQ(app.actionRequests.size(), 2U);
  EXPECT_EQ(app.actionRequests[1].params, fake::actionRequest("stop", 43));
  expectLeft(DeliberateLeak::ParkedBundle, 2);
}

class AnEarlyRequestWithoutMemory : public fake::ReadyLibraryTest {};

TEST_F(AnEarlyRequestWithoutMemory, IsDropped) {
  platform().faults.fail("bundle_create");

  assistant.asksForAction("play", 42);
  platform().clock.advance(kLong);

  EXPECT_THAT(logLines().back(), IsLine(kFile, "receiveRequest", "bundle_create is failed"));
  EXPECT_THAT(calls({"bundle_foreach", "bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_EQ(platform().journal.count("ecore_timer_add"), 0);
}

} // namespace
