// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "NorixImpl/NorixCommonData.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"
#include "fakes/NoClient.h"

#include <norix.h>

#include <ostream>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::NorixCommonData;
using testing::IsEmpty;

constexpr const char *kComplete = "completeActionExecution";

class AnActionResult : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    app.registersForState();
    assistant.asksForAction("play", 42); // timer 1
    forgetCalls();
  }

  static NorixCommonData &common() { return *NorixCommonData::_instance; }
};

TEST_F(AnActionResult, IsSent) {
  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(),
              ParcelsAre({fake::callback({}, fake::kAppId, fake::actionAnswer("done", 42))}));
}

TEST_F(AnActionResult, IsLogged) {
  app.answersAction("done");

  EXPECT_THAT(
      logLines(),
      LinesAre({IsLine(kFile, kComplete, "_norixClientAppId : %s",
                       "_norixClientAppId : com.valtren.tizen.norix"),
                IsLine(kFile, kComplete, "Action result:"), IsLine(kFile, kComplete, "%s", "done"),
                IsLine(kFile, "sendResponse", "App Id %s", "App Id org.example.music"),
                IsLine(kFile, kComplete, "Response success")}));
}

TEST_F(AnActionResult, EndsTheWaitBeforeTheResponseIsMade) {
  app.answersAction("done");

  EXPECT_THAT(
      calls({"ecore_timer_del", "bundle_create", "bundle_add_str", "bundle_add_byte", "app_get_id",
             "rpc_port_parcel_send", "bundle_free"}),
      TextsAre({"ecore_timer_del(timer 1)", "bundle_create()",
                "bundle_add_str(bundle 3, status_code, ACTION_EXECUTION_SUCCESS)",
                "bundle_add_str(bundle 3, result, done)", "bundle_add_byte(bundle 3, requestId, 8)",
                "app_get_id()", "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                "bundle_free(bundle 3)"}));
}

TEST_F(AnActionResult, ForgetsTheHandleAfterTheResponse) {
  size_t entries = 0;
  platform().during["rpc_port_parcel_send"] = [&entries] {
    entries = common()._actionHandlerMap.size();
  };

  app.answersAction("done");

  EXPECT_EQ(entries, 1U);
  EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
}

TEST_F(AnActionResult, IsDroppedWithoutAnErrorWhenItIsTheSecond) {
  app.answersAction("done");
  forgetCalls();

  EXPECT_EQ(app.answersAction("again"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete,
                                           "Couldn't find requestId corresponding to "
                                           "actionHandler %d",
                                           "Couldn't find requestId corresponding to "
                                           "actionHandler 2")}));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AnActionResult, NeedsAClient) {
  {
    const fake::NoClient noClient;
    EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_OPERATION_FAILED);
  }

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "Norix Client is not connected")}));
  EXPECT_EQ(platform().clock.alive().size(), 1U);
}

TEST_F(AnActionResult, ChecksTheClientBeforeTheHandle) {
  const fake::NoClient noClient;

  EXPECT_EQ(norix_complete_action_execution(nullptr, "done"), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(AnActionResult, ReadsNoHandleWithoutAClient) {
  const fake::NoClient noClient;

  EXPECT_EQ(norix_complete_action_execution(reinterpret_cast<void *>(1), "done"),
            NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(AnActionResult, NeedsAHandle) {
  EXPECT_EQ(norix_complete_action_execution(nullptr, "done"), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "request handle is null")}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_EQ(platform().clock.alive().size(), 1U);
}

TEST_F(AnActionResult, ToAnUnknownHandleLeavesTheRequestWaiting) {
  int unknown = -1;

  EXPECT_EQ(norix_complete_action_execution(&unknown, "done"), NORIX_ERROR_NONE);
  EXPECT_EQ(log().back(), "Couldn't find requestId corresponding to actionHandler -1");

  platform().clock.advance(30);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action execution request timed out", 42)}));
}

TEST_F(AnActionResult, ToAReplacedRequestIsDroppedWithoutAnError) {
  assistant.asksForAction("play", 43);
  forgetCalls();

  EXPECT_EQ(norix_complete_action_execution(app.actionRequests[0].handle, "x"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Couldn't find requestId corresponding to actionHandler 2"}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnActionResult, ToAnOlderRequestIsDiscardedWithItsEntry) {
  // The number has come round: the entry is there, but it is another request's.
  common()._requestId = 43;

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete,
                                           "Discarding response recieved for old requestId %llu",
                                           "Discarding response recieved for old requestId 42")}));
  EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_EQ(platform().clock.alive().size(), 1U);
}

TEST_F(AnActionResult, ToAnOlderRequestIsDiscardedAlsoWhenNothingWaits) {
  platform().faults.fail("bundle_create");
  app.answersAction("lost"); // ends the wait and keeps the entry
  common()._requestId = 43;
  forgetCalls();

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Discarding response recieved for old requestId 42"}));
  EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
}

TEST_F(AnActionResult, ToAnOlderRequestIsLoggedWhileItsEntryIsThere) {
  size_t entries = 0;
  common()._requestId = 43;
  inside("dlog_print(Discarding response recieved for old requestId 42)",
         [&entries] { entries = common()._actionHandlerMap.size(); });

  app.answersAction("done");

  EXPECT_EQ(entries, 1U);
}

TEST_F(AnActionResult, TakesAClientWithAnEmptyId) {
  common()._norixClientAppId.clear();

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_EQ(log()[0], "_norixClientAppId : ");
  EXPECT_EQ(log()[4], "response error: InvalidCallbackException");
}

TEST_F(AnActionResult, NamesAnOlderRequestIdOfAllSixtyFourBits) {
  common()._actionHandlerMap[2].second = ~0ULL;

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_NONE);

  EXPECT_EQ(log().back(), "Discarding response recieved for old requestId 18446744073709551615");
}

TEST_F(AnActionResult, ComparesAllSixtyFourBitsOfTheRequestId) {
  common()._requestId = 42ULL | (1ULL << 32);

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnActionResult, ToAStateRequestIsLateAndKeepsTheEntry) {
  assistant.asksForState(43);
  forgetCalls();

  EXPECT_EQ(norix_complete_action_execution(app.stateRequests.back().handle, "x"),
            NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine(kFile, kComplete,
                               "Action Execution result recieved after timeout, discarding")}));
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
}

TEST_F(AnActionResult, IsLostWithoutABundle) {
  platform().faults.fail("bundle_create");

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "bundle_create is failed")}));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_EQ(common()._actionHandlerMap.size(), 1U);
  platform().clock.advance(kLong);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnActionResult, IsLateAfterItWasLost) {
  platform().faults.fail("bundle_create");
  app.answersAction("done");
  forgetCalls();

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(log(), TextsAre({"Action Execution result recieved after timeout, discarding"}));
  EXPECT_THAT(calls({"ecore_timer_del", "bundle_create"}), IsEmpty());
}

TEST_F(AnActionResult, SaysSuccessAlsoWhenItCouldNotBeDelivered) {
  assistant.disconnects();
  forgetCalls();

  EXPECT_EQ(app.answersAction("done"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_EQ(log().back(), "Response success");
  EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
  expectLeft(fake::DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResult, MayBeGivenInsideTheCallback) {
  app.onAction = [this](const auto &) {
    EXPECT_EQ(app.answersAction("at once"), NORIX_ERROR_NONE);
  };

  assistant.asksForAction("play", 43);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("at once", 43)}));
}

struct Answer {
  const char *name;
  std::string text;
};

void PrintTo(const Answer &row, std::ostream *out) {
  *out << row.name;
}

class AnActionText : public AnActionResult, public testing::WithParamInterface<Answer> {};

TEST_P(AnActionText, IsSentUnchanged) {
  EXPECT_EQ(app.answersAction(GetParam().text.c_str()), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer(GetParam().text, 42)}));
  EXPECT_EQ(log()[2], GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, AnActionText,
                         testing::Values(Answer{"ThatIsEmpty", ""},
                                         Answer{"WithPercentSigns", "%s %n 100%"},
                                         Answer{"OfSeveralLines", "a\nb\r\n"},
                                         Answer{"ThatIsNoUtf8", "\xff\xfe\x80"},
                                         Answer{"InAnotherScript", "재생 중 ▶"},
                                         Answer{"OfAMebibyte", std::string(1 << 20, 'x')}),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
