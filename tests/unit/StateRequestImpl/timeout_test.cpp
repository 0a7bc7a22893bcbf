// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include "NorixImpl/NorixCommonData.h"
#include "StateRequestImpl/StateRequestImpl.h"

#include <norix.h>

namespace {

using fake::IsLine;
using fake::library;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::NorixCommonData;
using testing::IsEmpty;

constexpr const char *kTimeout = "_appStateRequestCompleteCheckCb";

class AnUnansweredStateRequest : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    assistant.asksForState(42);
    check = platform().clock.alive().front().callback;
    forgetCalls();
  }

  // Calls the timer's callback out of turn.
  Eina_Bool fires(void *data) const {
    return library([this, data] { return check(data); });
  }

  Ecore_Task_Cb check = nullptr;
};

TEST_F(AnUnansweredStateRequest, TimesOutAfterThirtySecondsAndNotBefore) {
  platform().clock.advance(29.999);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  platform().clock.advance(0.001);

  EXPECT_THAT(
      assistant.callbacks(),
      ParcelsAre({fake::callback(
          {}, fake::kAppId, fake::stateFailure("App state request execution timed out", 42))}));
}

TEST_F(AnUnansweredStateRequest, TimesOutOnce) {
  platform().clock.advance(kLong);

  EXPECT_EQ(assistant.callbacks().size(), 1U);
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

TEST_F(AnUnansweredStateRequest, IsLogged) {
  platform().clock.advance(30);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine(kFile, kTimeout,
                               "App state request execution timed out. Failed to execute action."),
                        IsLine(kFile, "sendResponse", "App Id %s", "App Id org.example.music")}));
}

TEST_F(AnUnansweredStateRequest, LosesItsHandle) {
  platform().clock.advance(30);

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(AnUnansweredStateRequest, LosesTheHandleOfTheCurrentNumberWhicheverItIs) {
  NorixCommonData::_instance->_actionHandlerMap[50] = {"other", 1};
  NorixCommonData::_instance->_actionHandlerIndex = 50;

  platform().clock.advance(30);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(50), 0U);
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 1U);
}

// The entry of another number outlives the timeout: its late answer is told so.
TEST_F(AnUnansweredStateRequest, RefusesALateAnswerWhoseHandleIsStillKnown) {
  NorixCommonData::_instance->_actionHandlerIndex = 50;
  platform().clock.advance(30);
  forgetCalls();

  EXPECT_EQ(app.answersState("late"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(log(), TextsAre({"App State result recieved after timeout, discarding"}));
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 1U);
}

TEST_F(AnUnansweredStateRequest, IsStillNamedWhileTheTimeoutIsSent) {
  size_t entries = 0;
  platform().during["rpc_port_parcel_send"] = [&entries] {
    entries = NorixCommonData::_instance->_actionHandlerMap.size();
  };

  platform().clock.advance(30);

  EXPECT_EQ(entries, 1U);
}

TEST_F(AnUnansweredStateRequest, DropsALateAnswerWithoutAnError) {
  platform().clock.advance(30);
  forgetCalls();

  EXPECT_EQ(app.answersState("late"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Couldn't find requestId corresponding to actionHandler 2"}));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AnUnansweredStateRequest, IsNotTimedOutWhenItWasAnswered) {
  platform().clock.advance(29.999);
  app.answersState("in time");

  platform().clock.advance(kLong);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("in time", 42)}));
}

TEST_F(AnUnansweredStateRequest, IsNotTimedOutWhenItWasReplaced) {
  platform().clock.advance(20);
  assistant.asksForState(43);

  platform().clock.advance(29.999);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  platform().clock.advance(0.001);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request execution timed out", 43)}));
}

TEST_F(AnUnansweredStateRequest, IsTimedOutUnderTheIdInProgress) {
  NorixCommonData::_instance->_requestId = 99;

  platform().clock.advance(30);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request execution timed out", 99)}));
}

TEST_F(AnUnansweredStateRequest, SendsNothingWithoutABundle) {
  platform().faults.fail("bundle_create");

  platform().clock.advance(30);

  EXPECT_THAT(logLines().back(), IsLine(kFile, kTimeout, "bundle_create is failed"));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  // The handle is kept, but the wait is over.
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.size(), 1U);
  EXPECT_EQ(app.answersState("late"), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(AnUnansweredStateRequest, EndsAlsoWhenTheClientIsGone) {
  assistant.disconnects();
  forgetCalls();

  platform().clock.advance(30);

  EXPECT_EQ(log().back(), "response error: NotConnectedSocketException");
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(AnUnansweredStateRequest, NeedsItsObject) {
  EXPECT_EQ(fires(nullptr), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kTimeout, "State Request is null")}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  platform().clock.advance(30);
}

TEST_F(AnUnansweredStateRequest, IsSilentWhenTheWaitIsOverAlready) {
  app.answersState("in time");
  forgetCalls();

  EXPECT_EQ(fires(norix::StateRequestImpl::_instance), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(log(), IsEmpty());
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AnUnansweredStateRequest, StopsItsTimer) {
  EXPECT_EQ(fires(norix::StateRequestImpl::_instance), ECORE_CALLBACK_CANCEL);

  EXPECT_EQ(assistant.callbacks().size(), 1U);
  // Fired by the test and not by the clock, so the timer itself is still there; it says nothing.
  platform().clock.advance(kLong);
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

} // namespace
