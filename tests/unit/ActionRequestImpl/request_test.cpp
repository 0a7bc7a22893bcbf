// SPDX-License-Identifier: Apache-2.0
//
// Requests whose callback is registered.
#include "logFile.h"

#include "ActionRequestImpl/ActionRequestImpl.h"

#include "NorixImpl/NorixCommonData.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

namespace {

using fake::IsLine;
using fake::library;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::ActionRequestImpl;
using norix::NorixCommonData;
using testing::IsEmpty;

class AnActionRequest : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    forgetCalls();
  }
};

TEST_F(AnActionRequest, IsHandedToItsCallback) {
  assistant.asksForAction("play", 42);

  ASSERT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(app.actionRequests[0].params, fake::actionRequest("play", 42));
}

TEST_F(AnActionRequest, IsTheBundleThatArrivedAndNoFurtherCopy) {
  int created = 0;
  app.onAction = [&created](const auto &) { created = platform().bundles.created(); };

  assistant.asksForAction("play", 42);

  // The one that was read from the parcel, and the stub's copy of it for the service.
  EXPECT_EQ(created, 2);
}

TEST_F(AnActionRequest, IsLogged) {
  assistant.asksForAction("play", 42);

  const fake::LogLine &line = logLines().back();
  EXPECT_EQ(line.file, kFile);
  EXPECT_EQ(line.function, "receiveRequest");
  EXPECT_EQ(line.format, "%s %s %s(%d): Found execute action Id: %s  Callback: %p");
  EXPECT_THAT(line.text, testing::StartsWith("Found execute action Id: play  Callback: 0x"));
}

TEST_F(AnActionRequest, StartsTheThirtySecondsBeforeTheCallback) {
  std::vector<fake::FakeTimer> timers;
  app.onAction = [&timers](const auto &) { timers = platform().clock.alive(); };

  assistant.asksForAction("play", 42);

  ASSERT_EQ(timers.size(), 1U);
  EXPECT_EQ(timers[0].interval, COMPLETE_CHECKING_TIME * COMPLETE_WAITING_MAX_COUNT);
  EXPECT_EQ(timers[0].interval, 30.0);
  EXPECT_EQ(timers[0].data, ActionRequestImpl::_instance);
}

TEST_F(AnActionRequest, GetsTheNextHandle) {
  assistant.asksForAction("play", 42);

  const NorixCommonData *common = NorixCommonData::_instance;
  EXPECT_EQ(common->_actionHandlerIndex, 2);
  EXPECT_EQ(common->_actionHandlerMap.at(2), std::make_pair(std::string("play"), 42ULL));
  EXPECT_EQ(app.actionRequests.back().handle, &common->_actionHandlers[2]);
}

TEST_F(AnActionRequest, TakesTheNumberFromTheRequestThatHadIt) {
  NorixCommonData::_instance->_actionHandlerMap[2] = {"older", 7};

  assistant.asksForAction("play", 42);

  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.at(2),
            std::make_pair(std::string("play"), 42ULL));
}

TEST_F(AnActionRequest, RecordsItsSender) {
  assistant.asksForAction("play", 42);

  EXPECT_EQ(NorixCommonData::_instance->_norixClientAppId, fake::kAssistantId);
}

TEST_F(AnActionRequest, GoesOnWithoutATimer) {
  platform().faults.fail("ecore_timer_add");

  assistant.asksForAction("play", 42);

  // Without a timer there is no wait, and every answer is late.
  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OPERATION_FAILED);
}

// The wait has begun before the handle is drawn, and the application is not called.
TEST_F(AnActionRequest, WaitsAlsoWhenItsHandleFindsNoMemory) {
  NorixCommonData::_instance->_actionHandlerMap[2] = {"older", 7};
  platform().during["ecore_timer_add"] = [] { fake::Heap::instance().failNew(1); };

  EXPECT_EQ(assistant.asksForAction("play", 42), 0);

  EXPECT_EQ(log().back(), "stopped an exception: std::bad_alloc");
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 2);
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 0U);
  platform().clock.advance(30);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action execution request timed out", 42)}));
}

TEST_F(AnActionRequest, IsAbandonedWithDeleteTimer) {
  assistant.asksForAction("play", 42); // timer 1
  forgetCalls();
  const auto deleteTimer = [] {
    library([] {
      ActionRequestImpl::getInstance()->deleteTimer();
      return 0;
    });
  };

  deleteTimer();
  deleteTimer();

  EXPECT_THAT(calls({"ecore_timer_del", "bundle_free"}),
              TextsAre({"ecore_timer_del(timer 1)", "ecore_timer_del(null)"}));
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(AnActionRequest, IsForgottenWithDeinitialisation) {
  assistant.asksForAction("play", 42);

  EXPECT_EQ(library([] { return ActionRequestImpl::getInstance()->deinitialize(); }),
            NORIX_ERROR_NONE);

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

} // namespace
