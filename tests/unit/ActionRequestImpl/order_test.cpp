// SPDX-License-Identifier: Apache-2.0
//
// What the object holds at each moment that the platform can look into: a step that came earlier or
// later would be seen.
#include "EarlyRequest.h"

#include "NorixImpl/NorixCommonData.h"

#include <norix.h>

namespace {

using fake::DeliberateLeak;
using fake::library;
using fake::platform;
using fake::TextsAre;
using norix::ActionRequestImpl;
using norix::ActionRequestImplAccess;
using norix::NorixCommonData;
using testing::IsEmpty;

// Counts the moments that came, so that no test passes because none did.
class TheMoment : public AnEarlyRequest {
protected:
  void TearDown() override {
    EXPECT_EQ(_seen, _expected);
    AnEarlyRequest::TearDown();
  }

  void at(const std::string &call, const std::function<void()> &looks) {
    ++_expected;
    inside(call, [this, looks] {
      ++_seen;
      looks();
    });
  }

private:
  int _expected = 0;
  int _seen = 0;
};

TEST_F(TheMoment, ARequestIsCopiedTheTicksAreStillThoseOfTheOneBefore) {
  ticks(3);
  at("bundle_foreach(bundle 5)", [] {
    EXPECT_EQ(ActionRequestImplAccess::retryCount(), 3);
    EXPECT_NE(ActionRequestImplAccess::pendingBundle(), nullptr);
    EXPECT_EQ(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
  });

  assistant.asksForAction("stop", 43);

  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(TheMoment, ARequestBeginsToWaitNoTickIsCounted) {
  ticks(3);
  at("ecore_timer_add(0.02)", [] {
    EXPECT_EQ(ActionRequestImplAccess::retryCount(), 0);
    EXPECT_EQ(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
  });

  assistant.asksForAction("stop", 43);

  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(TheMoment, ALateRequestIsDeliveredItsRetryTimerIsStillNamedWhileTheWaitBegins) {
  app.registersFor("play");
  at("ecore_timer_add(30)", [] {
    EXPECT_NE(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
    EXPECT_EQ(ActionRequestImplAccess::completeCheckTimer(), nullptr);
  });
  app.onAction = [](const auto &) {
    EXPECT_EQ(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
    EXPECT_NE(ActionRequestImplAccess::completeCheckTimer(), nullptr);
  };

  ticks(1);

  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(TheMoment, ARequestIsAbandonedItsTimersAreForgottenOneByOne) {
  app.registersFor("play");
  ticks(1);
  assistant.asksForAction("stop", 43); // ends the wait of the first
  at("bundle_free(bundle 6)", [] {
    EXPECT_EQ(ActionRequestImplAccess::completeCheckTimer(), nullptr);
    EXPECT_EQ(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
  });

  assistant.asksForState(44);

  expectLeft(DeliberateLeak::ParkedBundle); // of the first
}

class TheMomentOfAWait : public TheMoment {
protected:
  void SetUp() override {
    TheMoment::SetUp();
    app.registersFor("play");
    assistant.asksForAction("play", 43);
    timer = fake::describe(ActionRequestImplAccess::completeCheckTimer());
    forgetCalls();
  }

  std::string timer;
};

// Routing has always ended the wait of the request before; on its own, receiveRequest leaves it
// alone, and there are two timers.
TEST_F(TheMomentOfAWait, IsForgottenBeforeTheRetryTimerIsDeleted) {
  bundle *second = platform().bundles.create(fake::actionRequest("stop", 44));
  library([second] {
    ActionRequestImpl::getInstance()->receiveRequest(fake::kAssistantId, "stop", second);
  });
  bundle_free(second);
  const std::string retry = fake::describe(ActionRequestImplAccess::actionExecutionFireTimer());
  at("ecore_timer_del(" + retry + ")", [] {
    EXPECT_EQ(ActionRequestImplAccess::completeCheckTimer(), nullptr);
    EXPECT_NE(ActionRequestImplAccess::actionExecutionFireTimer(), nullptr);
  });

  assistant.asksForState(46);

  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

TEST_F(TheMomentOfAWait, IsOverWhenTheResponseIsMade) {
  at("bundle_create()", [this] {
    EXPECT_EQ(ActionRequestImplAccess::completeCheckTimer(), nullptr);
    EXPECT_EQ(app.answersAction("inside"), NORIX_ERROR_OPERATION_FAILED);
  });

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(TheMomentOfAWait, IsOverWhenItsTimeoutIsLogged) {
  at("dlog_print(action execution timed out. Failed to execute action.)",
     [] { EXPECT_EQ(ActionRequestImplAccess::completeCheckTimer(), nullptr); });

  platform().clock.advance(30);

  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(TheMomentOfAWait, KeepsItsHandleUntilTheTimeoutsDeliveryIsLogged) {
  at("dlog_print(send reponse result: 0)",
     [] { EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.size(), 1U); });

  platform().clock.advance(30);

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(TheMomentOfAWait, KeepsItsHandleUntilTheSuccessIsLogged) {
  at("dlog_print(Response success)",
     [] { EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.size(), 1U); });

  app.answersAction("result");

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(TheMomentOfAWait, IsDeinitialisedAfterTheTicksWereForgotten) {
  assistant.asksForAction("stop", 44); // parked
  ticks(3);
  const std::string retry = fake::describe(ActionRequestImplAccess::actionExecutionFireTimer());
  at("ecore_timer_del(" + retry + ")", [] {
    EXPECT_EQ(ActionRequestImplAccess::retryCount(), 0);
    EXPECT_NE(ActionRequestImplAccess::pendingBundle(), nullptr);
  });

  app.deinitialises();

  EXPECT_EQ(ActionRequestImplAccess::retryCount(), 0);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(TheMomentOfAWait, IsDeinitialisedAfterTheParkedRequestWasForgotten) {
  bundle *parked = platform().bundles.create({});
  ActionRequestImplAccess::setPendingBundle(parked);
  at("ecore_timer_del(" + timer + ")", [] {
    EXPECT_EQ(ActionRequestImplAccess::pendingBundle(), nullptr);
    EXPECT_NE(ActionRequestImplAccess::completeCheckTimer(), nullptr);
    EXPECT_EQ(ActionRequestImplAccess::registered(), 1U);
  });

  app.deinitialises();

  expectLeft(DeliberateLeak::ParkedBundle);
}

// Every line and every entry of a road, in one order.
class TheSteps : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    assistant.asksForAction("play", 42); // timer 1
    forgetCalls();
  }
};

TEST_F(TheSteps, OfAnAnswerStandInTheirOrder) {
  app.answersAction("done");

  EXPECT_THAT(calls({"ecore_timer_del", "bundle_create", "bundle_add_byte", "dlog_print",
                     "app_get_id", "rpc_port_parcel_send", "bundle_free"}),
              TextsAre({"ecore_timer_del(timer 1)", "bundle_create()",
                        "bundle_add_byte(bundle 3, requestId, 8)",
                        "dlog_print(_norixClientAppId : com.valtren.tizen.norix)",
                        "dlog_print(Action result:)", "dlog_print(done)", "app_get_id()",
                        "dlog_print(App Id org.example.music)",
                        "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                        "bundle_free(bundle 3)", "dlog_print(Response success)"}));
}

TEST_F(TheSteps, OfATimeoutStandInTheirOrder) {
  platform().clock.advance(30);

  EXPECT_THAT(calls({"bundle_create", "bundle_add_str", "bundle_add_byte", "dlog_print",
                     "app_get_id", "rpc_port_parcel_send", "bundle_free"}),
              TextsAre({"dlog_print(action execution timed out. Failed to execute action.)",
                        "bundle_create()", "bundle_add_str(bundle 3, result, )",
                        "bundle_add_str(bundle 3, status_code, ACTION_EXECUTION_FAILURE)",
                        "bundle_add_str(bundle 3, status_msg, Action execution request timed out)",
                        "bundle_add_byte(bundle 3, requestId, 8)", "app_get_id()",
                        "dlog_print(App Id org.example.music)",
                        "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                        "bundle_free(bundle 3)", "dlog_print(send reponse result: 0)"}));
}

} // namespace
