// SPDX-License-Identifier: Apache-2.0
#include <tizen_error.h>

#include <climits>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <thread>

namespace {

TEST(ErrorValues, AreTheOnesThatApplicationsKnow) {
  EXPECT_EQ(TIZEN_ERROR_NONE, 0);
  EXPECT_EQ(TIZEN_ERROR_NOT_PERMITTED, -1);
  EXPECT_EQ(TIZEN_ERROR_NO_SUCH_FILE, -2);
  EXPECT_EQ(TIZEN_ERROR_IO_ERROR, -5);
  EXPECT_EQ(TIZEN_ERROR_OUT_OF_MEMORY, -12);
  EXPECT_EQ(TIZEN_ERROR_PERMISSION_DENIED, -13);
  EXPECT_EQ(TIZEN_ERROR_INVALID_PARAMETER, -22);
  EXPECT_EQ(TIZEN_ERROR_KEY_NOT_AVAILABLE, -126);
  EXPECT_EQ(TIZEN_ERROR_UNKNOWN, -1073741824);
  EXPECT_EQ(TIZEN_ERROR_NOT_SUPPORTED, -1073741822);
}

TEST(TheLastResult, IsNoneInANewThread) {
  set_last_result(TIZEN_ERROR_IO_ERROR);
  int seen = TIZEN_ERROR_UNKNOWN;

  std::thread([&seen] { seen = get_last_result(); }).join();

  EXPECT_EQ(seen, TIZEN_ERROR_NONE);
}

TEST(TheLastResult, IsTheOneThatWasSet) {
  set_last_result(TIZEN_ERROR_IO_ERROR);
  set_last_result(12345);

  EXPECT_EQ(get_last_result(), 12345);
  EXPECT_EQ(get_last_result(), 12345);
}

TEST(TheLastResult, BelongsToItsThread) {
  set_last_result(TIZEN_ERROR_IO_ERROR);

  std::thread([] { set_last_result(TIZEN_ERROR_OUT_OF_MEMORY); }).join();

  EXPECT_EQ(get_last_result(), TIZEN_ERROR_IO_ERROR);
}

struct Message {
  const char *name;
  int error;
  const char *text;
};

void PrintTo(const Message &row, std::ostream *out) {
  *out << row.name;
}

class AnErrorMessage : public testing::TestWithParam<Message> {};

TEST_P(AnErrorMessage, TellsWhatTheValueMeans) {
  EXPECT_STREQ(get_error_message(GetParam().error), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachValue, AnErrorMessage,
    testing::Values(Message{"None", TIZEN_ERROR_NONE, "Successful"},
                    Message{"NotPermitted", TIZEN_ERROR_NOT_PERMITTED, "Operation not permitted"},
                    Message{"NoSuchFile", TIZEN_ERROR_NO_SUCH_FILE, "No such file or directory"},
                    Message{"IoError", TIZEN_ERROR_IO_ERROR, "Input/output error"},
                    Message{"OutOfMemory", TIZEN_ERROR_OUT_OF_MEMORY, "Cannot allocate memory"},
                    Message{"PermissionDenied", TIZEN_ERROR_PERMISSION_DENIED, "Permission denied"},
                    Message{"InvalidParameter", TIZEN_ERROR_INVALID_PARAMETER, "Invalid argument"},
                    Message{"KeyNotAvailable", TIZEN_ERROR_KEY_NOT_AVAILABLE,
                            "Required key not available"},
                    Message{"Unknown", TIZEN_ERROR_UNKNOWN, "Unknown error"},
                    Message{"NotSupported", TIZEN_ERROR_NOT_SUPPORTED, "Not supported"},
                    Message{"AnotherErrno", -ECONNREFUSED, "Connection refused"},
                    Message{"AnUndefinedValue", -0x01180000, "Undefined error number"},
                    Message{"AnErrnoThatDoesNotExist", -4000, "Undefined error number"},
                    Message{"APositiveValue", 5, "Undefined error number"},
                    Message{"TheSmallestValue", INT_MIN, "Undefined error number"},
                    Message{"TheLargestValue", INT_MAX, "Undefined error number"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(AnErrorText, IsTheSameEachTime) {
  EXPECT_EQ(get_error_message(TIZEN_ERROR_IO_ERROR), get_error_message(TIZEN_ERROR_IO_ERROR));
}

} // namespace
