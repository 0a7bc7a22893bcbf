// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "ActionRequestImpl/ActionRequestImpl.h"

#include "NorixImpl/NorixCommonData.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

namespace {

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

constexpr const char *kTimeout = "_completeActionExecutionCheckCb";
constexpr const char *kTimedOut = "Action execution request timed out";

class AnUnansweredAction : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    assistant.asksForAction("play", 42);
    check = platform().clock.alive().front().callback;
    forgetCalls();
  }

  // Calls the timer's callback out of turn.
  Eina_Bool fires(void *data) const {
    return library([this, data] { return check(data); });
  }

  Ecore_Task_Cb check = nullptr;
};

TEST_F(AnUnansweredAction, TimesOutAfterThirtySecondsAndNotBefore) {
  platform().clock.advance(29.999);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  platform().clock.advance(0.001);

  EXPECT_THAT(assistant.callbacks(),
              ParcelsAre({fake::callback({}, fake::kAppId, fake::actionFailure(kTimedOut, 42))}));
}

TEST_F(AnUnansweredAction, TimesOutOnce) {
  platform().clock.advance(kLong);

  EXPECT_EQ(assistant.callbacks().size(), 1U);
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

TEST_F(AnUnansweredAction, IsLogged) {
  platform().clock.advance(30);

  EXPECT_THAT(
      logLines(),
      LinesAre({IsLine(kFile, kTimeout, "action execution timed out. Failed to execute action."),
                IsLine(kFile, "sendResponse", "App Id %s", "App Id org.example.music"),
                IsLine(kFile, kTimeout, "send reponse result: %d", "send reponse result: 0")}));
}

TEST_F(AnUnansweredAction, LosesItsHandle) {
  platform().clock.advance(30);

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
}

TEST_F(AnUnansweredAction, LosesTheHandleOfTheCurrentNumberWhicheverItIs) {
  NorixCommonData::_instance->_actionHandlerMap[50] = {"other", 1};
  NorixCommonData::_instance->_actionHandlerIndex = 50;

  platform().clock.advance(30);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(50), 0U);
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 1U);
}

TEST_F(AnUnansweredAction, IsStillNamedWhileTheTimeoutIsSent) {
  size_t entries = 0;
  platform().during["rpc_port_parcel_send"] = [&entries] {
    entries = NorixCommonData::_instance->_actionHandlerMap.size();
  };

  platform().clock.advance(30);

  EXPECT_EQ(entries, 1U);
}

TEST_F(AnUnansweredAction, DropsALateAnswerWithoutAnError) {
  platform().clock.advance(30);
  forgetCalls();

  EXPECT_EQ(app.answersAction("late"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Couldn't find requestId corresponding to actionHandler 2"}));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

// The entry of another number outlives the timeout: its late answer is told so.
TEST_F(AnUnansweredAction, RefusesALateAnswerWhoseHandleIsStillKnown) {
  NorixCommonData::_instance->_actionHandlerIndex = 50;
  platform().clock.advance(30);
  forgetCalls();

  EXPECT_EQ(app.answersAction("late"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(log(), TextsAre({"Action Execution result recieved after timeout, discarding"}));
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 1U);
}

TEST_F(AnUnansweredAction, IsNotTimedOutWhenItWasAnswered) {
  platform().clock.advance(29.999);
  app.answersAction("in time");

  platform().clock.advance(kLong);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("in time", 42)}));
}

TEST_F(AnUnansweredAction, IsNotTimedOutWhenItWasReplaced) {
  platform().clock.advance(20);
  assistant.asksForAction("play", 43);

  platform().clock.advance(29.999);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  platform().clock.advance(0.001);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionFailure(kTimedOut, 43)}));
}

TEST_F(AnUnansweredAction, IsTimedOutUnderTheIdInProgress) {
  NorixCommonData::_instance->_requestId = 99;

  platform().clock.advance(30);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionFailure(kTimedOut, 99)}));
}

TEST_F(AnUnansweredAction, SendsNothingWithoutABundle) {
  platform().faults.fail("bundle_create");

  platform().clock.advance(30);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kTimeout,
                                           "action execution timed out. Failed to execute action."),
                                    IsLine(kFile, kTimeout, "bundle_create is failed")}));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  // The handle is kept, but the wait is over.
  EXPECT_EQ(app.answersAction("late"), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(AnUnansweredAction, EndsAlsoWhenTheClientIsGone) {
  assistant.disconnects();
  forgetCalls();

  platform().clock.advance(30);

  EXPECT_EQ(log().back(), "send reponse result: -1073741825");
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  expectLeft(fake::DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnUnansweredAction, NeedsItsObject) {
  EXPECT_EQ(fires(nullptr), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kTimeout, "Action Request Pointer is null")}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnUnansweredAction, IsSilentWhenTheWaitIsOverAlready) {
  app.answersAction("in time");
  forgetCalls();

  EXPECT_EQ(fires(ActionRequestImpl::_instance), ECORE_CALLBACK_CANCEL);

  EXPECT_THAT(log(), IsEmpty());
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

} // namespace
