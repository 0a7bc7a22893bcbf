// SPDX-License-Identifier: Apache-2.0
#include <norix.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>

namespace {

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
