// SPDX-License-Identifier: Apache-2.0
//
// What each tick of a waiting request needs, and in which order it looks.
#include "EarlyRequest.h"

#include "NorixImpl/NorixCommonData.h"

#include "fakes/NoClient.h"

#include <norix.h>

#include <new>
#include <stdexcept>

namespace {

using fake::DeliberateLeak;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using norix::NorixCommonData;
using testing::IsEmpty;

// A tick that cannot go on ends its timer, and the object goes on naming it.
TEST_F(AnEarlyRequest, NeedsItsObject) {
  forgetCalls();

  EXPECT_EQ(fires(nullptr), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(logLines(), LinesAre({isTickLine(kTick), isTickLine("actionPtr is null")}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, NeedsAClient) {
  forgetCalls();
  {
    const fake::NoClient noClient;
    ticks(6);
  }

  EXPECT_THAT(logLines(), LinesAre({isTickLine(kTick), isTickLine("Norix Client app id is null")}));
  EXPECT_THAT(platform().clock.alive(), IsEmpty());

  forgetCalls();
  assistant.asksForAction("play", 43);
  EXPECT_THAT(
      calls({"ecore_timer_del"}),
      TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)", "ecore_timer_del(stale timer)"}));
  expectLeft(DeliberateLeak::ParkedBundle); // of the second; the first was freed
}

TEST_F(AnEarlyRequest, TakesAClientWithAnEmptyId) {
  NorixCommonData::_instance->_norixClientAppId.clear();
  app.registersFor("play");

  ticks(1);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

// Routing has always cancelled the tick; on its own, receiveRequest leaves it alone and drops the
// copy.
TEST_F(AnEarlyRequest, NeedsItsCopy) {
  bundle *second = platform().bundles.create(fake::actionRequest("stop", 43));
  fake::library([second] { object()->receiveRequest(fake::kAssistantId, "stop", second); });
  bundle_free(second);
  forgetCalls();

  ticks(6);

  EXPECT_THAT(logLines(),
              LinesAre({isTickLine(kTick), isTickLine("ActionRequest bundle data is null")}));
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, NeedsItsTimer) {
  app.registersFor("play");
  ticks(1); // delivered, with its copy still there and the timer's field empty
  forgetCalls();

  EXPECT_EQ(fires(object()), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(
      logLines(),
      LinesAre({isTickLine(kTick), isTickLine("ActionRequest _actionExecutionFireTimer is null")}));
  EXPECT_EQ(app.actionRequests.size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, ChecksItsTimerBeforeItCountsTheTick) {
  ticks(6); // given up: another tick counted would give it up again
  forgetCalls();

  EXPECT_EQ(fires(object()), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(
      logLines(),
      LinesAre({isTickLine(kTick), isTickLine("ActionRequest _actionExecutionFireTimer is null")}));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, ChecksItsClientBeforeItsCopy) {
  app.deinitialises();
  forgetCalls();
  {
    const fake::NoClient noClient;

    EXPECT_EQ(fires(object()), ECORE_CALLBACK_CANCEL);
  }

  EXPECT_EQ(log().back(), "Norix Client app id is null");
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, ChecksItsCopyBeforeItsTimer) {
  app.deinitialises();
  forgetCalls();

  EXPECT_EQ(fires(object()), ECORE_CALLBACK_CANCEL);

  EXPECT_EQ(log().back(), "ActionRequest bundle data is null");
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, RenewsItsTimerUntilItIsDelivered) {
  EXPECT_EQ(fires(object()), ECORE_CALLBACK_RENEW);

  app.registersFor("play");
  EXPECT_EQ(fires(object()), ECORE_CALLBACK_CANCEL);
  expectLeft(DeliberateLeak::ParkedBundle);

  // Fired by the test and not by the clock: the timer is still there, and has nothing to do.
  platform().clock.advance(1);
  EXPECT_EQ(app.actionRequests.size(), 1U);
}

TEST_F(AnEarlyRequest, ThrowsOutOfTheTickWhenItsCopyHasNoActionId) {
  platform().faults.fail("bundle_add_str");
  assistant.asksForAction("play", 43);

  EXPECT_THAT([] { ticks(1); }, testing::ThrowsMessage<std::logic_error>(
                                    testing::StrEq("basic_string::_M_construct null not valid")));

  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(AnEarlyRequest, GoesOnWithoutATimer) {
  platform().faults.fail("ecore_timer_add");

  assistant.asksForAction("play", 43);
  platform().clock.advance(kLong);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

// Where a tick is interrupted shows how far it had come: whether it had let go of its timer.
class AnInterruptedTick : public AnEarlyRequest {
protected:
  // What the next request finds to delete.
  std::vector<std::string> deletedByTheNextRequest() {
    forgetCalls();
    assistant.asksForState(43);
    return calls({"ecore_timer_del"});
  }
};

TEST_F(AnInterruptedTick, HasItsTimerUntilTheWaitForTheAnswerHasBegun) {
  app.registersFor("play");
  platform().during["ecore_timer_add"] = [] { throw std::bad_alloc(); };

  EXPECT_THROW(ticks(1), std::bad_alloc);

  EXPECT_THAT(deletedByTheNextRequest(), TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)",
                                                   "ecore_timer_del(timer 1)"}));
}

TEST_F(AnInterruptedTick, HasItsTimerUntilItIsLoggedThatItGivesUp) {
  ticks(5);
  platform().during["dlog_print"] = [] { // the tick's own line
    platform().during["dlog_print"] = [] { throw std::bad_alloc(); };
  };

  EXPECT_THROW(ticks(1), std::bad_alloc);

  EXPECT_THAT(deletedByTheNextRequest(), TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)",
                                                   "ecore_timer_del(timer 1)"}));
}

TEST_F(AnInterruptedTick, HasNoTimerAnyMoreWhenTheResponseIsMade) {
  ticks(5);
  platform().during["bundle_create"] = [] { throw std::bad_alloc(); };

  EXPECT_THROW(ticks(1), std::bad_alloc);

  EXPECT_THAT(deletedByTheNextRequest(),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)"}));
  platform().clock.advance(kInterval); // interrupted, so Ecore has it still
  expectLeft(DeliberateLeak::ParkedBundle);
}

} // namespace
