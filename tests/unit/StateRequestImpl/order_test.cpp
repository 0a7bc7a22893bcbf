// SPDX-License-Identifier: Apache-2.0
//
// What is true at each moment that the platform can look into: a step that came earlier or later
// would be seen.
#include "NorixImpl/NorixCommonData.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <new>

namespace {

using fake::platform;
using fake::TextsAre;
using norix::NorixCommonData;

class TheStepsOfAState : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    assistant.asksForState(42); // timer 1
    forgetCalls();
  }

  std::vector<std::string> steps() {
    return calls({"ecore_timer_del", "ecore_timer_add", "bundle_create", "bundle_add_str",
                  "bundle_add_byte", "dlog_print", "app_get_id", "rpc_port_parcel_send",
                  "bundle_free"});
  }
  // An answer from inside another, or from inside the timeout.
  void isRefusedInside(const std::string &call) {
    inside(call, [this] {
      EXPECT_EQ(app.answersState("inside"), NORIX_ERROR_OPERATION_FAILED);
      ++refused;
    });
  }

  int refused = 0;
};

TEST_F(TheStepsOfAState, OfAnAnswerStandInTheirOrder) {
  app.answersState("playing");

  EXPECT_THAT(
      steps(),
      TextsAre({"ecore_timer_del(timer 1)", "dlog_print(App result:)", "bundle_create()",
                "bundle_add_str(bundle 3, status_code, ACTION_EXECUTION_SUCCESS)",
                "bundle_add_str(bundle 3, appContext, playing)",
                "bundle_add_byte(bundle 3, requestId, 8)",
                "dlog_print(_norixClientAppId : com.valtren.tizen.norix)",
                "dlog_print(App Context:)", "dlog_print(playing)", "app_get_id()",
                "dlog_print(App Id org.example.music)",
                "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                "bundle_free(bundle 3)", "dlog_print([NorixClient <- App] send result: 0)"}));
}

TEST_F(TheStepsOfAState, OfATimeoutStandInTheirOrder) {
  platform().clock.advance(30);

  EXPECT_THAT(
      steps(),
      TextsAre({"dlog_print(App state request execution timed out. Failed to execute action.)",
                "bundle_create()", "bundle_add_str(bundle 3, appContext, )",
                "bundle_add_str(bundle 3, status_code, ACTION_EXECUTION_FAILURE)",
                "bundle_add_str(bundle 3, status_msg, App state request execution timed out)",
                "bundle_add_byte(bundle 3, requestId, 8)", "app_get_id()",
                "dlog_print(App Id org.example.music)",
                "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                "bundle_free(bundle 3)"}));
}

TEST_F(TheStepsOfAState, OfARefusalStandInTheirOrder) {
  norix_unset_app_state_request_cb();
  inside("dlog_print(App State request recieved)", [] { forgetCalls(); });

  assistant.asksForState(43);

  EXPECT_THAT(
      steps(),
      TextsAre({"dlog_print(There is no app state request callback.)", "bundle_create()",
                "bundle_add_str(bundle 5, appContext, )",
                "bundle_add_str(bundle 5, status_code, ACTION_EXECUTION_FAILURE)",
                "bundle_add_str(bundle 5, status_msg, App state request callback not registered)",
                "bundle_add_byte(bundle 5, requestId, 8)", "app_get_id()",
                "dlog_print(App Id org.example.music)",
                "rpc_port_parcel_send(parcel 7, callback port of instance-1)",
                "bundle_free(bundle 5)", "dlog_print(message_port_send_message status: 0)",
                "bundle_free(bundle 4)", "bundle_free(bundle 3)"}));
}

TEST_F(TheStepsOfAState, OfAnAnswerWithoutAnAppIdStandInTheirOrder) {
  platform().application.id.reset();

  app.answersState("playing");

  EXPECT_THAT(calls({"app_get_id", "dlog_print", "bundle_free"}),
              TextsAre({"dlog_print(App result:)",
                        "dlog_print(_norixClientAppId : com.valtren.tizen.norix)",
                        "dlog_print(App Context:)", "dlog_print(playing)", "app_get_id()",
                        "dlog_print(App Id is null)", "bundle_free(bundle 3)",
                        "dlog_print([NorixClient <- App] send result: -1073741825)"}));
}

TEST_F(TheStepsOfAState, AreNotTakenTwiceByAnAnswerInsideAnother) {
  isRefusedInside("dlog_print(App result:)");

  EXPECT_EQ(app.answersState("outside"), NORIX_ERROR_NONE);

  EXPECT_EQ(refused, 1);
  EXPECT_THAT(assistant.responses(), fake::ResponsesAre({fake::stateAnswer("outside", 42)}));
}

TEST_F(TheStepsOfAState, AreNotTakenTwiceByAnAnswerInsideTheTimeout) {
  isRefusedInside("dlog_print(App state request execution timed out. Failed to execute action.)");

  platform().clock.advance(30);

  EXPECT_EQ(refused, 1);
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

// The wait is over once the timer is deleted, and not before: until then, the answer is in time.
TEST_F(TheStepsOfAState, OfAnAnswerThatIsInterruptedLeaveTheWait) {
  platform().during["ecore_timer_del"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(app.answersState("interrupted"), std::bad_alloc);

  EXPECT_EQ(app.answersState("again"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), fake::ResponsesAre({fake::stateAnswer("again", 42)}));
}

TEST_F(TheStepsOfAState, OfARequestRecordItsSenderFirst) {
  NorixCommonData::_instance->_norixClientAppId = "another";
  std::string sender;
  inside("ecore_timer_add(30)",
         [&sender] { sender = NorixCommonData::_instance->_norixClientAppId; });

  assistant.asksForState(43);

  EXPECT_EQ(sender, fake::kAssistantId);
  expectLeft(fake::DeliberateLeak::StateTimer);
}

} // namespace
