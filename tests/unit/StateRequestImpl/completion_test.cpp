// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"
#include "fakes/NoClient.h"

#include "NorixImpl/NorixCommonData.h"

#include <norix.h>

#include <ostream>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::NorixCommonData;
using testing::IsEmpty;

constexpr const char *kComplete = "completeAppStateRequest";

class AStateAnswer : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    assistant.asksForState(42); // timer 1
    forgetCalls();
  }

  static NorixCommonData &common() { return *NorixCommonData::_instance; }
};

TEST_F(AStateAnswer, IsSent) {
  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(),
              ParcelsAre({fake::callback({}, fake::kAppId, fake::stateAnswer("playing", 42))}));
}

TEST_F(AStateAnswer, IsLogged) {
  app.answersState("playing");

  EXPECT_THAT(
      logLines(),
      LinesAre({IsLine(kFile, kComplete, "App result:"),
                IsLine(kFile, kComplete, "_norixClientAppId : %s",
                       "_norixClientAppId : com.valtren.tizen.norix"),
                IsLine(kFile, kComplete, "App Context:"), IsLine(kFile, kComplete, "%s", "playing"),
                IsLine(kFile, "sendResponse", "App Id %s", "App Id org.example.music"),
                IsLine(kFile, kComplete, "[NorixClient <- App] send result: %d",
                       "[NorixClient <- App] send result: 0")}));
}

TEST_F(AStateAnswer, EndsTheWaitBeforeTheResponseIsMade) {
  app.answersState("playing");

  EXPECT_THAT(calls({"ecore_timer_del", "bundle_create", "bundle_add_str", "bundle_add_byte",
                     "app_get_id", "rpc_port_parcel_send", "bundle_free"}),
              TextsAre({"ecore_timer_del(timer 1)", "bundle_create()",
                        "bundle_add_str(bundle 3, status_code, ACTION_EXECUTION_SUCCESS)",
                        "bundle_add_str(bundle 3, appContext, playing)",
                        "bundle_add_byte(bundle 3, requestId, 8)", "app_get_id()",
                        "rpc_port_parcel_send(parcel 5, callback port of instance-1)",
                        "bundle_free(bundle 3)"}));
}

TEST_F(AStateAnswer, KeepsTheHandleUntilItsNumberIsDrawnAgain) {
  app.answersState("playing");

  EXPECT_EQ(common()._actionHandlerMap.count(2), 1U);
}

TEST_F(AStateAnswer, IsLateWhenItIsTheSecond) {
  app.answersState("playing");
  forgetCalls();

  EXPECT_EQ(app.answersState("again"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(
      logLines(),
      LinesAre({IsLine(kFile, kComplete, "App State result recieved after timeout, discarding")}));
  EXPECT_THAT(calls({"ecore_timer_del", "bundle_create"}), IsEmpty());
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AStateAnswer, NeedsAHandle) {
  EXPECT_EQ(norix_complete_app_state_request(nullptr, "playing"), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "StateRequestInfo is null")}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, ChecksTheHandleBeforeTheClient) {
  const fake::NoClient noClient;

  EXPECT_EQ(norix_complete_app_state_request(nullptr, "playing"), NORIX_ERROR_INVALID_PARAMETER);

  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, NeedsAClient) {
  {
    const fake::NoClient noClient;
    EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_OPERATION_FAILED);
  }

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "Norix Client is not connected")}));
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, ReadsNoHandleWithoutAClient) {
  const fake::NoClient noClient;

  EXPECT_EQ(norix_complete_app_state_request(reinterpret_cast<void *>(1), "playing"),
            NORIX_ERROR_OPERATION_FAILED);
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, TakesAClientWithAnEmptyId) {
  common()._norixClientAppId.clear();

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_EQ(log()[1], "_norixClientAppId : ");
  EXPECT_EQ(log()[5], "response error: InvalidCallbackException");
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateAnswer, ToAnUnknownHandleIsDroppedWithoutAnError) {
  int unknown = 50;

  EXPECT_EQ(norix_complete_app_state_request(&unknown, "playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete,
                                           "Couldn't find requestId corresponding to "
                                           "actionHandler %d",
                                           "Couldn't find requestId corresponding to "
                                           "actionHandler 50")}));
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, ToAnOlderRequestIsDroppedWithoutAWord) {
  // The number has come round: the entry is there, but it is another request's.
  common()._requestId = 43;

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), IsEmpty());
  EXPECT_EQ(common()._actionHandlerMap.count(2), 1U);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, ToAnOlderRequestIsDroppedAlsoWhenNothingWaits) {
  app.answersState("playing"); // ends the wait and keeps the entry
  common()._requestId = 43;
  forgetCalls();

  EXPECT_EQ(app.answersState("again"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(AStateAnswer, ToAReplacedRequestIsDroppedWithoutAnError) {
  assistant.asksForState(43);
  forgetCalls();

  EXPECT_EQ(norix_complete_app_state_request(app.stateRequests[0].handle, "x"), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Couldn't find requestId corresponding to actionHandler 2"}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::StateTimer);
}

// The log may run other code of the process, and a request may arrive meanwhile.
TEST_F(AStateAnswer, IsDiscardedWhenAnotherRequestArrivesWhileItIsLogged) {
  inside("dlog_print(App result:)", [this] {
    assistant.asksForState(43);
    forgetCalls();
  });

  EXPECT_EQ(app.answersState("of the first"), NORIX_ERROR_NONE);

  EXPECT_THAT(log().back(), "Discarding response recieved for old requestId 42");
  EXPECT_THAT(logLines(),
              testing::Contains(IsLine(kFile, kComplete,
                                       "Discarding response recieved for old requestId "
                                       "%llu",
                                       "Discarding response recieved for old requestId 42")));
  EXPECT_THAT(calls({"bundle_create", "app_get_id"}), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());

  EXPECT_EQ(app.answersState("of the second"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("of the second", 43)}));
}

TEST_F(AStateAnswer, ComparesAllSixtyFourBitsOfTheRequestId) {
  common()._requestId = 42ULL | (1ULL << 63);

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::StateTimer);
}

TEST_F(AStateAnswer, ToAnActionIsLate) {
  assistant.asksForAction("play", 43);

  EXPECT_EQ(norix_complete_app_state_request(app.actionRequests.back().handle, "x"),
            NORIX_ERROR_OPERATION_FAILED);

  EXPECT_EQ(log().back(), "App State result recieved after timeout, discarding");
}

TEST_F(AStateAnswer, IsLostWithoutABundle) {
  platform().faults.fail("bundle_create");

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, kComplete, "App result:"),
                                    IsLine(kFile, kComplete, "bundle_create is failed")}));
  EXPECT_THAT(calls({"bundle_add_str", "bundle_add_byte"}), IsEmpty());
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AStateAnswer, ReturnsTheResultOfTheDelivery) {
  assistant.disconnects();
  forgetCalls();

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_EQ(log().back(), "[NorixClient <- App] send result: -1073741825");
}

TEST_F(AStateAnswer, GoesToTheClientThatAsked) {
  fake::Assistant other("org.example.other", "instance-2");
  other.isReady();
  other.asksForState(44);

  app.answersState("playing");

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(other.responses(), ResponsesAre({fake::stateAnswer("playing", 44)}));
}

TEST_F(AStateAnswer, HasZerosForTheIdThatItsRequestDidNotHave) {
  assistant.sends({fake::text("actionId", "getAppContext")});

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("playing", 0)}));
}

TEST_F(AStateAnswer, HasAllSixtyFourBitsOfTheId) {
  assistant.asksForState(0xfedcba9876543210ULL);

  EXPECT_EQ(app.answersState("playing"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateAnswer("playing", 0xfedcba9876543210ULL)}));
}

TEST_F(AStateAnswer, MayBeGivenInsideTheCallback) {
  app.onState = [this](const auto &) { EXPECT_EQ(app.answersState("at once"), NORIX_ERROR_NONE); };

  assistant.asksForState(43);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("at once", 43)}));
}

struct Answer {
  const char *name;
  std::string text;
};

void PrintTo(const Answer &row, std::ostream *out) {
  *out << row.name;
}

class AStateText : public AStateAnswer, public testing::WithParamInterface<Answer> {};

TEST_P(AStateText, IsSentUnchanged) {
  EXPECT_EQ(app.answersState(GetParam().text.c_str()), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer(GetParam().text, 42)}));
  EXPECT_EQ(log()[3], GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, AStateText,
                         testing::Values(Answer{"ThatIsEmpty", ""},
                                         Answer{"WithPercentSigns", "%s %n 100%"},
                                         Answer{"OfSeveralLines", "a\nb\r\n"},
                                         Answer{"ThatIsNoUtf8", "\xff\xfe\x80"},
                                         Answer{"InAnotherScript", "재생 중 ▶"},
                                         Answer{"OfAMebibyte", std::string(1 << 20, 'x')}),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
