// SPDX-License-Identifier: Apache-2.0
//
// The library as other languages find it.
#include "integration/harness/AssistantCommand.h"
#include "support/TemporaryRuntime.h"

#include <gtest/gtest.h>

namespace integration {
namespace {

using support::TemporaryRuntime;

TEST(AProgramInC, GetsFromEveryFunctionWhatTheHeaderPromises) {
  const TemporaryRuntime runtime;
  runtime.install("org.example.c", "1.0");

  const Outcome outcome =
      finish(Process({PROGRAM_IN_C}, {{"AUL_APPID", "org.example.c"}, {"DLOG_FILTER", "*:S"}}));

  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

} // namespace
} // namespace integration
