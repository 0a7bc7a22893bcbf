// SPDX-License-Identifier: Apache-2.0
//
// The steps of an answer and of a timeout, in their order.
#include "fakes/LibraryTest.h"

#include <norix.h>

namespace {

using fake::platform;
using fake::TextsAre;

class TheSteps : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    assistant.asksForAction("play", 42); // timer 1
    forgetCalls();
  }

  // An answer from inside another, or from inside the timeout.
  void isRefusedInside(const std::string &call) {
    inside(call, [this] {
      EXPECT_EQ(app.answersAction("inside"), NORIX_ERROR_OPERATION_FAILED);
      ++refused;
    });
  }

  int refused = 0;
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

TEST_F(TheSteps, AreNotTakenTwiceByAnAnswerInsideAnother) {
  isRefusedInside("bundle_create()");

  EXPECT_EQ(app.answersAction("outside"), NORIX_ERROR_NONE);

  EXPECT_EQ(refused, 1);
  EXPECT_THAT(assistant.responses(), fake::ResponsesAre({fake::actionAnswer("outside", 42)}));
}

TEST_F(TheSteps, AreNotTakenTwiceByAnAnswerInsideTheTimeout) {
  isRefusedInside("dlog_print(action execution timed out. Failed to execute action.)");

  platform().clock.advance(30);

  EXPECT_EQ(refused, 1);
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

} // namespace
