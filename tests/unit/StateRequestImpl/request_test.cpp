// SPDX-License-Identifier: Apache-2.0
#include "StateRequestImpl/StateRequestImpl.h"

#include "NorixImpl/NorixCommonData.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

#include <new>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::library;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::NorixCommonData;
using norix::StateRequestImpl;
using testing::IsEmpty;

class AStateRequest : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    forgetCalls();
  }
};

TEST_F(AStateRequest, StartsTheThirtySeconds) {
  assistant.asksForState(1);

  const std::vector<fake::FakeTimer> timers = platform().clock.alive();
  ASSERT_EQ(timers.size(), 1U);
  EXPECT_EQ(timers[0].interval, COMPLETE_CHECKING_TIME * COMPLETE_WAITING_MAX_COUNT);
  EXPECT_EQ(timers[0].data, StateRequestImpl::_instance);
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, StartsItsTimerBeforeTheCallback) {
  app.onState = [](const auto &) {
    EXPECT_THAT(calls({"ecore_timer_add"}), TextsAre({"ecore_timer_add(30)"}));
  };

  assistant.asksForState(1);

  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, GetsTheNextHandle) {
  assistant.asksForState(42);

  const NorixCommonData *common = NorixCommonData::_instance;
  EXPECT_EQ(common->_actionHandlerIndex, 2);
  EXPECT_EQ(common->_actionHandlerMap.at(2), std::make_pair(std::string("getAppContext"), 42ULL));
  EXPECT_EQ(app.stateRequests.back().handle, &common->_actionHandlers[2]);
  EXPECT_EQ(app.stateRequests.back().number, 2);
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, LogsNothingOnItsWayToTheCallback) {
  assistant.asksForState(1);

  EXPECT_EQ(log().back(), "App State request recieved");
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, RecordsItsSenderBeforeTheCallback) {
  app.onState = [](const auto &) {
    EXPECT_EQ(NorixCommonData::_instance->_norixClientAppId, fake::kAssistantId);
  };

  assistant.asksForState(1);

  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, TakesTheNumberFromTheRequestThatHadIt) {
  NorixCommonData::_instance->_actionHandlerMap[2] = {"older", 7};

  assistant.asksForState(42);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.at(2),
            std::make_pair(std::string("getAppContext"), 42ULL));
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateRequest, GoesOnWithoutATimer) {
  platform().faults.fail("ecore_timer_add");

  assistant.asksForState(1);

  EXPECT_EQ(app.stateRequests.size(), 1U);
  // Without a timer there is no wait, and every answer is late.
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);
}

// Routing has always deleted the earlier timer; on its own, receiveRequest leaves it alone.
TEST_F(AStateRequest, DoesNotDeleteAnEarlierTimer) {
  const auto receive = [] {
    library([] {
      StateRequestImpl::getInstance()->receiveRequest(fake::kAssistantId, "getAppContext");
      return 0;
    });
  };

  receive();
  receive();

  EXPECT_THAT(calls({"ecore_timer_del"}), IsEmpty());
  EXPECT_EQ(platform().clock.alive().size(), 2U);
  expectLeft(DeliberateLeak::StateTimer, 2);
}

TEST_F(AStateRequest, IsAbandonedWithDeleteTimer) {
  assistant.asksForState(1); // timer 1
  forgetCalls();
  const auto deleteTimer = [] {
    library([] {
      StateRequestImpl::getInstance()->deleteTimer();
      return 0;
    });
  };

  deleteTimer();
  deleteTimer();

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(timer 1)", "ecore_timer_del(null)"}));
  EXPECT_THAT(log(), IsEmpty());
}

// The wait has begun before the handle is drawn, and the application is not called.
TEST_F(AStateRequest, WaitsAlsoWhenItsHandleFindsNoMemory) {
  NorixCommonData::_instance->_actionHandlerMap[2] = {"older", 7};
  platform().during["ecore_timer_add"] = [] { fake::Heap::instance().failNew(1); };

  EXPECT_EQ(assistant.asksForState(42), 0);

  EXPECT_EQ(log().back(), "stopped an exception: std::bad_alloc");
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  EXPECT_THAT(app.stateRequests, IsEmpty());
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 2);
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 0U);
  platform().clock.advance(30);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request execution timed out", 42)}));
}

class AStateRequestWithoutACallback : public fake::ReadyLibraryTest {};

TEST_F(AStateRequestWithoutACallback, IsAnsweredWithAFailureAtOnce) {
  assistant.asksForState(42);

  EXPECT_THAT(
      assistant.callbacks(),
      ParcelsAre({fake::callback(
          {}, fake::kAppId, fake::stateFailure("App state request callback not registered", 42))}));
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

TEST_F(AStateRequestWithoutACallback, IsLogged) {
  assistant.asksForState(42);

  const auto &lines = logLines();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_THAT(lines[5], IsLine("StateRequestImpl.cpp", "receiveRequest",
                               "There is no app state request callback."));
  EXPECT_THAT(lines[6], IsLine("StateRequestImpl.cpp", "sendResponse", "App Id %s",
                               "App Id org.example.music"));
  EXPECT_THAT(lines[7], IsLine("StateRequestImpl.cpp", "receiveRequest",
                               "message_port_send_message status: %d",
                               "message_port_send_message status: 0"));
}

TEST_F(AStateRequestWithoutACallback, DrawsNoHandle) {
  assistant.asksForState(42);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 1);
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(AStateRequestWithoutACallback, IsNotAnsweredWithoutABundle) {
  platform().faults.fail("bundle_create");

  EXPECT_EQ(assistant.asksForState(42), 0);

  EXPECT_THAT(logLines().back(),
              IsLine("StateRequestImpl.cpp", "receiveRequest", "Bundle create failed"));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AStateRequestWithoutACallback, LogsTheResultOfAFailedDelivery) {
  assistant.unregisters();

  EXPECT_EQ(assistant.asksForState(42), 0);

  EXPECT_EQ(log().back(), "message_port_send_message status: -1073741825");
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateRequestWithoutACallback, IsAnsweredWithZerosWhenItHasNoId) {
  assistant.sends({fake::text("actionId", "getAppContext")});

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request callback not registered", 0)}));
}

} // namespace
