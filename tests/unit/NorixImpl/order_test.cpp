// SPDX-License-Identifier: Apache-2.0
//
// What is true at each moment of a road that the platform can look into.
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

namespace {

using fake::platform;
using fake::TextsAre;
using norix::NorixCommonData;
using norix::NorixImpl;
using testing::IsEmpty;

constexpr unsigned long long kNoRequest = 0xffffffffffffffffULL;

class TheOrder : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    assistant.asksForAction("play", 1); // timer 1
    forgetCalls();
  }

  static NorixCommonData &common() { return *NorixCommonData::_instance; }
};

TEST_F(TheOrder, OfARequestIsToRecordItBeforeTheOneBeforeIsAbandoned) {
  unsigned long long requestId = 0;
  size_t entries = 1;
  size_t timers = 0;
  platform().during["ecore_timer_del"] = [&] {
    requestId = common()._requestId;
    entries = common()._actionHandlerMap.size();
    timers = platform().clock.alive().size();
  };

  assistant.asksForAction("play", 2);

  EXPECT_EQ(requestId, 2U);
  EXPECT_EQ(entries, 0U);
  EXPECT_EQ(timers, 1U);
}

TEST_F(TheOrder, OfARequestIsToAbandonTheOneBeforeBeforeItIsRouted) {
  assistant.asksForAction("play", 2);

  EXPECT_THAT(calls({"dlog_print", "bundle_get_byte", "ecore_timer_del", "ecore_timer_add"}),
              testing::ElementsAre("dlog_print(Call stub Send)", testing::_, testing::_,
                                   "dlog_print(Call stub Sender com.valtren.tizen.norix)",
                                   "bundle_get_byte(bundle 4, requestId)", "ecore_timer_del(null)",
                                   "ecore_timer_del(timer 1)",
                                   "dlog_print(Action Execution request recieved)",
                                   testing::StartsWith("dlog_print(Found execute action Id: play"),
                                   "ecore_timer_add(30)"));
}

TEST_F(TheOrder, OfARequestIsToRecordItsSenderBeforeItIsParked) {
  fake::Assistant other("org.example.other", "instance-2");
  std::string sender;
  other.connects();
  platform().during["bundle_create"] = [&sender] { sender = common()._norixClientAppId; };

  other.asksForAction("unknown", 2);

  EXPECT_EQ(sender, "org.example.other");
  expectLeft(fake::DeliberateLeak::ParkedBundle);
}

TEST_F(TheOrder, OfADeinitialisationIsToForgetTheStateCallbackFirst) {
  platform().during["ecore_timer_del"] = [this] {
    assistant.asksForState(2);
    EXPECT_THAT(
        assistant.responses(),
        fake::ResponsesAre({fake::stateFailure("App state request callback not registered", 2)}));
  };

  app.deinitialises();

  EXPECT_THAT(app.stateRequests, IsEmpty());
}

// With the timers of actions, everything that the core and the request data hold is still there.
TEST_F(TheOrder, OfADeinitialisationIsToEndTheActionsBeforeTheRequestDataAndTheDelegates) {
  bool seen = false;
  platform().during["ecore_timer_del"] = [&seen] {
    seen = true;
    EXPECT_EQ(common()._requestId, 1U);
    EXPECT_EQ(common()._actionHandlerIndex, 2);
    EXPECT_EQ(common()._actionHandlerMap.size(), 1U);
    EXPECT_EQ(NorixImpl::_instance->_responseCbMap.size(), 1U);
    EXPECT_EQ(norix_unset_action_execution_cb("unknown"), NORIX_ERROR_NONE);
  };

  app.deinitialises();

  EXPECT_TRUE(seen);
}

// The connections end when nothing else is left.
TEST_F(TheOrder, OfADeinitialisationIsToDestroyTheStubLast) {
  bool seen = false;
  platform().during["dlog_print"] = [&seen] { // Call stub OnTerminate
    seen = true;
    EXPECT_EQ(common()._requestId, kNoRequest);
    EXPECT_EQ(common()._actionHandlerIndex, 0);
    EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
    EXPECT_THAT(NorixImpl::_instance->_responseCbMap, IsEmpty());
    EXPECT_EQ(norix_unset_action_execution_cb("play"), NORIX_ERROR_OPERATION_FAILED);
    EXPECT_EQ(platform().ports.stubsAlive(), 1U);
  };

  app.deinitialises();

  EXPECT_TRUE(seen);
}

class TheOrderOfAnInitialisation : public fake::LibraryTest {};

TEST_F(TheOrderOfAnInitialisation, IsToAskForTheVersionBeforeAnythingIsOpened) {
  app.initialises();

  EXPECT_THAT(
      calls({"app_get_id", "app_info_create", "app_info_foreach_metadata", "app_info_destroy",
             "dlog_print", "rpc_port_stub_create", "rpc_port_stub_listen"}),
      TextsAre({"app_get_id()", "dlog_print(AppId = org.example.music)",
                "app_info_create(org.example.music)", "app_info_foreach_metadata(app info 1)",
                // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one line of the log.
                "dlog_print(metadata_key[http://valtren.com/tizen/metadata/norix/sdk/version] "
                "metadata_value[1.0-beta])",
                "dlog_print(AppSdkVersion 1.0-beta)", "app_info_destroy(app info 1)",
                "rpc_port_stub_create(message)", "rpc_port_stub_listen(stub 1)",
                "dlog_print(App SDK NorixImpl is initialized)"}));
}

// The factory is there before a proxy can be.
TEST_F(TheOrderOfAnInitialisation, IsToBeReadyForConnectionsBeforeListening) {
  platform().during["rpc_port_stub_listen"] = [this] {
    assistant.connects();
    EXPECT_EQ(assistant.registers(), 0);
  };

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.results(), fake::ParcelsAre({fake::resultOf(0)}));
  app.registersForState();
  assistant.asksForState(1);
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
}

TEST_F(TheOrderOfAnInitialisation, IsToSayThatItIsDoneAtTheEnd) {
  (void)norix_deinitialize();
  bool seen = false;
  platform().during["dlog_print"] = [&seen] {
    seen = true;
    EXPECT_EQ(NorixCommonData::_instance->_requestId, kNoRequest);
    EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 1);
    EXPECT_EQ(norix_unset_action_execution_cb("play"), NORIX_ERROR_NONE);
  };

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_TRUE(seen);
}

// A request that arrives in the middle of it is abandoned by its end.
TEST_F(TheOrderOfAnInitialisation, IsToPrepareTheRequestDataAfterAllObjectsAreMade) {
  platform().during["rpc_port_stub_listen"] = [this] {
    assistant.connects();
    assistant.registers();
    assistant.asksForState(7);
    EXPECT_EQ(NorixCommonData::_instance->_requestId, 7U);
    EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 0);
  };

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(NorixCommonData::_instance->_requestId, kNoRequest);
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerIndex, 1);
}

} // namespace
