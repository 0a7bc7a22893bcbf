// SPDX-License-Identifier: Apache-2.0
//
// What an application was compiled against on a device: the values and the signatures.
#include "support/Child.h"

#include <dlog.h>
#include <gtest/gtest.h>

namespace {

[[maybe_unused]] int (*const kPrint)(log_priority, const char *, const char *, ...) = dlog_print;
[[maybe_unused]] int (*const kPrintList)(log_priority, const char *, const char *,
                                         va_list) = dlog_vprint;

TEST(ThePriorities, HaveTheValuesThatApplicationsKnow) {
  EXPECT_EQ(DLOG_UNKNOWN, 0);
  EXPECT_EQ(DLOG_DEFAULT, 1);
  EXPECT_EQ(DLOG_VERBOSE, 2);
  EXPECT_EQ(DLOG_DEBUG, 3);
  EXPECT_EQ(DLOG_INFO, 4);
  EXPECT_EQ(DLOG_WARN, 5);
  EXPECT_EQ(DLOG_ERROR, 6);
  EXPECT_EQ(DLOG_FATAL, 7);
  EXPECT_EQ(DLOG_SILENT, 8);
  EXPECT_EQ(DLOG_PRIO_MAX, 9);
}

TEST(TheResults, HaveTheValuesThatApplicationsKnow) {
  EXPECT_EQ(DLOG_ERROR_NONE, 0);
  EXPECT_EQ(DLOG_ERROR_INVALID_PARAMETER, -22);
  EXPECT_EQ(DLOG_ERROR_NOT_PERMITTED, -1);
}

TEST(TheLastResult, IsNotChangedByALineThatIsWrittenDroppedOrRefused) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "QUIET:S"}}, [] {
    set_last_result(TIZEN_ERROR_IO_ERROR);
    dlog_print(DLOG_INFO, "TAG", "written");
    dlog_print(DLOG_INFO, "QUIET", "dropped");
    dlog_print(DLOG_SILENT, "TAG", "refused");
    return get_last_result() == TIZEN_ERROR_IO_ERROR ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

} // namespace
