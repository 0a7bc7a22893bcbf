// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include <norix.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>
#include <utility>

namespace {

using fake::platform;

struct TextConstant {
  const char *name;
  const char **variable;
  const char *value;
};

void PrintTo(const TextConstant &row, std::ostream *out) {
  *out << row.name;
}

class ATextConstant : public testing::TestWithParam<TextConstant> {};

TEST_P(ATextConstant, HasItsValue) {
  EXPECT_STREQ(*GetParam().variable, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    OfTheInterface, ATextConstant,
    testing::Values(TextConstant{"ACTION_ID", &ACTION_ID, "actionId"},
                    TextConstant{"ACTION_TYPE", &ACTION_TYPE, "actionType"},
                    TextConstant{"ACTION_PARAMS", &ACTION_PARAMS, "actionParams"},
                    TextConstant{"REQUEST_ID", &REQUEST_ID, "requestId"},
                    TextConstant{"ACTION_GET_APP_STATE", &ACTION_GET_APP_STATE, "getAppContext"},
                    TextConstant{"KEY_ACTION_RESULT", &KEY_ACTION_RESULT, "result"},
                    TextConstant{"KEY_APP_STATE", &KEY_APP_STATE, "appContext"},
                    TextConstant{"KEY_STATUS_CODE", &KEY_STATUS_CODE, "status_code"},
                    TextConstant{"KEY_STATUS_MESSAGE", &KEY_STATUS_MESSAGE, "status_msg"},
                    TextConstant{"ACTION_EXECUTION_SUCCESS", &ACTION_EXECUTION_SUCCESS,
                                 "ACTION_EXECUTION_SUCCESS"},
                    TextConstant{"ACTION_EXECUTION_FAILURE", &ACTION_EXECUTION_FAILURE,
                                 "ACTION_EXECUTION_FAILURE"},
                    TextConstant{"NORIX_PROXY_APP_NAME", &NORIX_PROXY_APP_NAME,
                                 "com.valtren.tizen.norix"},
                    TextConstant{"NORIX_PROXY_ALLOW_APPID_LIST_PATH",
                                 &NORIX_PROXY_ALLOW_APPID_LIST_PATH, "/usr/share/norix/"},
                    TextConstant{"NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME",
                                 &NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME, "allow_list.dat"}),
    [](const auto &tested) { return std::string(tested.param.name); });

// Each text is read where it is used: an application that links the library sees one definition.
class AChangedConstant : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    app.registersForState();
  }
  void TearDown() override {
    *_variable = _value;
    ReadyLibraryTest::TearDown();
  }

  void changes(const char *&variable, const char *value) {
    _variable = &variable;
    _value = std::exchange(variable, value);
  }
  fake::Contents actionResponse() {
    assistant.asksForAction("play", 1);
    app.answersAction("result");
    return assistant.responses().back();
  }
  fake::Contents stateResponse() {
    assistant.asksForState(1);
    app.answersState("state");
    return assistant.responses().back();
  }

private:
  const char **_variable = nullptr;
  const char *_value = nullptr;
};

TEST_F(AChangedConstant, RoutesByAnotherKey) {
  changes(ACTION_ID, "other");

  assistant.sends({fake::text("actionId", "unknown"), fake::text("other", "play")});

  EXPECT_EQ(app.actionRequests.size(), 1U);
}

TEST_F(AChangedConstant, RoutesAnotherActionIdToTheState) {
  changes(ACTION_GET_APP_STATE, "play");

  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.stateRequests.size(), 1U);
  app.answersState("state");
}

TEST_F(AChangedConstant, ReadsAndWritesAnotherRequestId) {
  changes(REQUEST_ID, "other");

  assistant.sends({fake::text("actionId", "play"), fake::id("other", 42)});
  app.answersAction("result");

  EXPECT_EQ(assistant.responses().back()[2], fake::id("other", 42));
}

TEST_F(AChangedConstant, ReadsAnotherType) {
  changes(ACTION_TYPE, "other");
  forgetCalls();

  actionResponse();

  EXPECT_THAT(calls({"bundle_get_str"}), testing::Contains("bundle_get_str(bundle 2, other)"));
}

TEST_F(AChangedConstant, ReadsOtherParameters) {
  changes(ACTION_PARAMS, "other");
  forgetCalls();

  actionResponse();

  EXPECT_THAT(calls({"bundle_get_str"}), testing::Contains("bundle_get_str(bundle 2, other)"));
}

TEST_F(AChangedConstant, AnswersUnderAnotherResult) {
  changes(KEY_ACTION_RESULT, "other");
  EXPECT_EQ(actionResponse()[1], fake::text("other", "result"));
}

TEST_F(AChangedConstant, AnswersUnderAnotherState) {
  changes(KEY_APP_STATE, "other");
  EXPECT_EQ(stateResponse()[1], fake::text("other", "state"));
}

TEST_F(AChangedConstant, AnswersUnderAnotherStatus) {
  changes(KEY_STATUS_CODE, "other");
  EXPECT_EQ(actionResponse()[0], fake::text("other", "ACTION_EXECUTION_SUCCESS"));
  EXPECT_EQ(stateResponse()[0], fake::text("other", "ACTION_EXECUTION_SUCCESS"));
}

TEST_F(AChangedConstant, AnswersWithAnotherSuccess) {
  changes(ACTION_EXECUTION_SUCCESS, "other");
  EXPECT_EQ(actionResponse()[0], fake::text("status_code", "other"));
  EXPECT_EQ(stateResponse()[0], fake::text("status_code", "other"));
}

TEST_F(AChangedConstant, FailsWithAnotherStatus) {
  changes(ACTION_EXECUTION_FAILURE, "other");
  assistant.asksForAction("play", 1);

  platform().clock.advance(30);

  EXPECT_EQ(assistant.responses().back()[1], fake::text("status_code", "other"));
}

TEST_F(AChangedConstant, FailsWithAnotherMessage) {
  changes(KEY_STATUS_MESSAGE, "other");
  assistant.asksForState(1);

  platform().clock.advance(30);

  EXPECT_EQ(assistant.responses().back()[2],
            fake::text("other", "App state request execution timed out"));
}

TEST(TheNumericConstants, HaveTheirValues) {
  EXPECT_EQ(COMPLETE_CHECKING_TIME, 0.1);
  EXPECT_EQ(COMPLETE_WAITING_MAX_COUNT, 300.0);
  EXPECT_EQ(ZERO_LENGTH, 0);
}

TEST(TheNumericConstants, AreReadOnly) {
  EXPECT_TRUE((std::is_same_v<decltype(COMPLETE_CHECKING_TIME), const double>));
  EXPECT_TRUE((std::is_same_v<decltype(COMPLETE_WAITING_MAX_COUNT), const double>));
  EXPECT_TRUE((std::is_same_v<decltype(ZERO_LENGTH), const int>));
}

TEST(TheResultCodes, HaveTheirValues) {
  EXPECT_EQ(NORIX_ERROR_NONE, 0);
  EXPECT_EQ(NORIX_ERROR_OUT_OF_MEMORY, -12);
  EXPECT_EQ(NORIX_ERROR_INVALID_PARAMETER, -22);
  EXPECT_EQ(NORIX_ERROR_NOT_SUPPORTED, -1073741822);
  EXPECT_EQ(NORIX_ERROR_OPERATION_FAILED, -1073741825);
}

TEST(TheSdkVersionKey, IsTheOneOfTheManifests) {
  EXPECT_STREQ(NORIX_SDK_VERSION_METADATA_KEY,
               "http://valtren.com/tizen/metadata/norix/sdk/version");
}

} // namespace
