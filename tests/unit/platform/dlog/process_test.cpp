// SPDX-License-Identifier: Apache-2.0
//
// The log of a whole process: threads, static objects.
#include "support/Child.h"

#include <dlog.h>
#include <gmock/gmock.h>
#include <set>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kThreads = 8;
constexpr int kLines = 200;

void logFromThreads() {
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread] {
      for (int line = 0; line < kLines; ++line) {
        dlog_print(DLOG_INFO, "TAG", "%d %d", thread, line);
        dlog_print(DLOG_INFO, "QUIET", "%d %d", thread, line);
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
}

TEST(Threads, LogEachLineOnceAndWhole) {
  std::multiset<std::string> expected;
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int line = 0; line < kLines; ++line) {
      expected.insert("I/TAG     : " + std::to_string(thread) + " " + std::to_string(line) + "\n");
    }
  }

  const Outcome outcome = inChild({{"DLOG_FILTER", "QUIET:S"}}, [] {
    logFromThreads();
    return 0;
  });

  std::multiset<std::string> lines;
  for (const std::string &write : outcome.writes) {
    lines.insert(withoutTimeAndPid(write));
  }
  EXPECT_EQ(lines, expected);
}

// Bit n of the parameter says that the program is started without descriptor n.
class AProgram : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(WithoutStandardStreams, AProgram, testing::Range(0, 8));

TEST_P(AProgram, OpensNothingInThePlaceOfAStandardStream) {
  const Outcome outcome = inChild({}, [] {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
      if ((GetParam() >> stream & 1) != 0) {
        close(stream);
      }
    }
    execl(DLOG_NEXT_DESCRIPTOR, DLOG_NEXT_DESCRIPTOR, nullptr);
    return 99;
  });

  EXPECT_GT(outcome.status, STDERR_FILENO);
  EXPECT_NE(outcome.status, 99);
}

TEST(StaticObjects, LogWhenTheyAreConstructedAndDestroyed) {
  const Outcome outcome = inChild({}, [] {
    execl(DLOG_STATIC_OBJECTS, DLOG_STATIC_OBJECTS, nullptr);
    return 99;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(withoutTimeAndPid(outcome.err),
            "I/STATIC  : constructor\nI/STATIC  : main\nI/STATIC  : destructor\n");
}

} // namespace
