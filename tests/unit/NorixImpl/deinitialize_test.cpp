// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"

#include <norix.h>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using norix::NorixCommonData;
using norix::NorixImpl;
using testing::IsEmpty;

class Deinitialising : public fake::ReadyLibraryTest {};

TEST_F(Deinitialising, TerminatesTheConnectionsAndDestroysTheStub) {
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("messageService.cpp", "OnTerminate", "Call stub OnTerminate"),
                        IsLine("NorixImpl.cpp", "deinitialize", "NorixImpl is deinitialized")}));
  EXPECT_THAT(calls({"dlog_print", "rpc_port_stub_destroy"}),
              TextsAre({"dlog_print(Call stub OnTerminate)", "rpc_port_stub_destroy(stub 1)",
                        "dlog_print(NorixImpl is deinitialized)"}));
}

TEST_F(Deinitialising, ASecondTimeDoesNothing) {
  app.deinitialises();
  forgetCalls();

  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("NorixImpl.cpp", "deinitialize",
                               "NorixImpl is not initialized. Please initialize at first.")}));
  EXPECT_THAT(calls({"rpc_port_stub_destroy", "ecore_timer_del"}), IsEmpty());
}

TEST_F(Deinitialising, DeletesTheTimersOfActionsAlsoWithoutAny) {
  app.deinitialises();

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)"}));
}

TEST_F(Deinitialising, DeletesTheRetryTimerBeforeTheCompletionTimer) {
  assistant.asksForAction("late", 1); // timer 1
  platform().journal.clear();

  app.deinitialises();

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(timer 1)", "ecore_timer_del(null)"}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(Deinitialising, LeavesNoTimerOfAnActionBehind) {
  app.registersFor("play");
  assistant.asksForAction("play", 1); // timer 1
  app.deinitialises();
  app.initialises();
  assistant.isReady();

  assistant.asksForAction("unknown", 2);

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)"}));
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(Deinitialising, LeavesNoTimerOfAParkedRequestBehind) {
  assistant.asksForAction("late", 1); // timer 1
  app.deinitialises();
  app.initialises();
  assistant.isReady();

  assistant.asksForAction("unknown", 2);

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(null)"}));
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle, 2);
}

TEST_F(Deinitialising, LeavesTheTimerOfAStateRequestAlone) {
  app.registersForState();
  assistant.asksForState(1);

  app.deinitialises();

  EXPECT_EQ(platform().clock.alive().size(), 1U);
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(Deinitialising, TakesTheRequestDataBackAndKeepsTheClient) {
  app.registersFor("play");
  assistant.asksForAction("play", 42);

  app.deinitialises();

  const NorixCommonData *common = NorixCommonData::_instance;
  EXPECT_EQ(common->_requestId, 0xffffffffffffffffULL);
  EXPECT_EQ(common->_actionHandlerIndex, 0);
  EXPECT_EQ(common->_norixClientAppId, fake::kAssistantId);
  EXPECT_THAT(common->_actionHandlerMap, IsEmpty());
}

TEST_F(Deinitialising, ForgetsTheDelegates) {
  EXPECT_EQ(NorixImpl::_instance->_responseCbMap.size(), 1U);

  app.deinitialises();

  EXPECT_THAT(NorixImpl::_instance->_responseCbMap, IsEmpty());
}

TEST_F(Deinitialising, ForgetsTheCallbacks) {
  app.registersForState();
  app.registersFor("play");

  app.deinitialises();
  app.initialises();
  assistant.isReady();
  assistant.asksForState(1);
  assistant.asksForAction("play", 2);

  EXPECT_THAT(app.stateRequests, IsEmpty());
  EXPECT_THAT(app.actionRequests, IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(Deinitialising, AllowsToInitialiseAgainWithANewStub) {
  app.deinitialises();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().ports.stubsCreated(), 2);
  EXPECT_EQ(platform().ports.stubsAlive(), 1U);
}

TEST_F(Deinitialising, StartsTheHandleNumbersAnew) {
  app.registersFor("play");
  assistant.asksForAction("play", 1);
  app.deinitialises();
  app.initialises();
  assistant.isReady();
  app.registersFor("play");

  assistant.asksForAction("play", 2);

  EXPECT_EQ(app.actionRequests.back().number, 2);
}

TEST_F(Deinitialising, ChangesNothingWhenTheStubCannotBeDestroyedCleanly) {
  platform().faults.fail("rpc_port_stub_destroy");

  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(log().back(), "NorixImpl is deinitialized");
}

class DeinitialisingAtFirst : public fake::LibraryTest {};

TEST_F(DeinitialisingAtFirst, IsNoError) {
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines().back(),
              IsLine("NorixImpl.cpp", "deinitialize",
                     "NorixImpl is not initialized. Please initialize at first."));
  EXPECT_EQ(NorixCommonData::_instance, nullptr);
}

} // namespace
