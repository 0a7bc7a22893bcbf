// SPDX-License-Identifier: Apache-2.0
#include "probe/LogText.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace norix::probe {
namespace {

// What the platform makes of a format, and what the probe does.
struct Written {
  std::string expected;
  std::string actual;
};

__attribute__((format(printf, 1, 2))) Written write(const char *format, ...) {
  std::array<char, Record::kLongestText + 1> expected{};
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  (void)std::vsnprintf(expected.data(), expected.size(), format, again);
  const LogText text(format, arguments);
  va_end(again);
  va_end(arguments);
  return {expected.data(), std::string(text.view())};
}

class ALogText : public testing::TestWithParam<Written> {};

TEST_P(ALogText, IsWhatThePlatformWrites) {
  EXPECT_EQ(GetParam().actual, GetParam().expected);
}

const std::string kLong(2 * Record::kLongestText, 'x');
// Behind a variable, so that the compiler does not see what is wrong with it.
const char *volatile kNull = nullptr;

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, ALogText,
    testing::Values(write("plain"), write("App Id %s", "org.example"), write("%s%s|", "a", ""),
                    write("[%s]", static_cast<const char *>(kNull)), write("result: %d", -12),
                    write("%d %d", INT_MIN, INT_MAX),
                    write("at %p", static_cast<const void *>(&kLong)),
                    write("at %p", static_cast<const void *>(kNull)), write("100%%"),
                    write("%llu of %s", 18446744073709551615ULL, "a"), write("%s %5.2f", "a", 1.0),
                    write("%s", kLong.c_str()), write("%s%d", kLong.c_str(), 1),
                    write("%s%u", kLong.c_str(), 1U)));

} // namespace
} // namespace norix::probe
