// SPDX-License-Identifier: Apache-2.0
#include "probe/Ring.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using norix::probe::Ring;

class TheRing : public testing::Test {
protected:
  bool push(const std::string &text) { return ring->push(text.data(), text.size()); }
  std::string pop() {
    std::array<char, Ring::kLongestRecord> record{};
    const std::size_t size = ring->pop(record.data());
    return {record.data(), size};
  }

  std::unique_ptr<Ring> ring = std::make_unique<Ring>();
};

TEST_F(TheRing, GivesRecordsBackInOrder) {
  EXPECT_TRUE(push("one"));
  EXPECT_TRUE(push("twenty"));

  EXPECT_EQ(pop(), "one");
  EXPECT_EQ(pop(), "twenty");
  EXPECT_EQ(pop(), "");
}

TEST_F(TheRing, RefusesWhatDoesNotFitAndKeepsTheRest) {
  const std::string record(Ring::kLongestRecord, 'r');
  std::size_t fitted = 0;
  while (push(record)) {
    ++fitted;
  }

  EXPECT_EQ(fitted, Ring::kCapacity / (Ring::kLongestRecord + sizeof(std::uint32_t)));
  EXPECT_EQ(pop(), record);
  EXPECT_TRUE(push(record));
}

TEST_F(TheRing, WrapsRecordsAroundItsEnd) {
  const std::string record(Ring::kLongestRecord - 3, 'r');
  for (std::size_t count = 0; count < 3 * Ring::kCapacity / record.size(); ++count) {
    ASSERT_TRUE(push(record + std::to_string(count % 10)));
    ASSERT_EQ(pop(), record + std::to_string(count % 10));
  }
}

TEST_F(TheRing, ForgetsEverythingWhenItIsReset) {
  push("one");
  pop();
  push("two");

  ring->reset();

  EXPECT_EQ(pop(), "");
  EXPECT_TRUE(push("three"));
  EXPECT_EQ(pop(), "three");
}

TEST_F(TheRing, LosesNothingOfManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kEach = 5000;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([this, number] {
      for (int count = 0; count < kEach; ++count) {
        while (!push(std::to_string(number) + " " + std::to_string(count))) {
          std::this_thread::yield();
        }
      }
    });
  }

  std::array<int, kThreads> next{};
  for (int received = 0; received < kThreads * kEach;) {
    const std::string record = pop();
    if (!record.empty()) {
      const auto number = static_cast<std::size_t>(record[0] - '0');
      ASSERT_EQ(record.substr(2), std::to_string(next.at(number)++));
      ++received;
    }
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
}

} // namespace
