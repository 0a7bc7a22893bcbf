// SPDX-License-Identifier: Apache-2.0
//
// libnorix.so as the dynamic linker loads it into an application.
#include "nullplatform/NullPlatform.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <norix.h>

#include <sched.h>

#include <atomic>
#include <thread>
#include <vector>

// The application's own constants: the dynamic linker has the library use them instead of its own.
const double COMPLETE_CHECKING_TIME = 0.25;
const double COMPLETE_WAITING_MAX_COUNT = 7.0;

namespace {

namespace platform = benchmarks::null_platform;

class TheSharedObject : public testing::Test {
protected:
  void SetUp() override {
    _library = dlopen(NORIX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(_library, nullptr) << dlerror();
  }

  template <typename Function>
  Function *function(const char *name) const {
    return reinterpret_cast<Function *>(dlsym(_library, name));
  }

  void isReady() {
    ASSERT_EQ(function<decltype(norix_initialize)>("norix_initialize")(), NORIX_ERROR_NONE);
    function<decltype(norix_set_app_state_request_cb)>("norix_set_app_state_request_cb")(ignore,
                                                                                         nullptr);
    platform::connect();
  }

  void *_library = nullptr;

private:
  static void ignore(void * /*request*/, void * /*userData*/) {}
};

std::atomic<int> entered{0};

// While one thread is inside, the others come to the same place.
void waitForTheOthers() {
  constexpr int kTurns = 10000;
  for (int turn = 0; turn < kTurns && entered < 8; ++turn) {
    sched_yield();
  }
  for (int turn = 0; turn < 100; ++turn) {
    sched_yield();
  }
}

// In a process of its own only: there is one first call.
TEST_F(TheSharedObject, AsksForTheApplicationsIdOnceWhenEightThreadsCallItFirst) {
  if (platform::idsAsked() != 0) {
    GTEST_SKIP() << "an earlier test of this process has called the library";
  }
  auto *const deinitialize = function<decltype(norix_deinitialize)>("norix_deinitialize");
  platform::whileIdIsAsked = waitForTheOthers;
  std::atomic<int> succeeded{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      ++entered;
      succeeded += deinitialize() == NORIX_ERROR_NONE ? 1 : 0;
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }

  platform::whileIdIsAsked = nullptr;
  EXPECT_EQ(succeeded, 8);
  EXPECT_EQ(platform::idsAsked(), 1U);
}

TEST_F(TheSharedObject, WaitsAsLongAsTheConstantsOfTheApplicationSay) {
  isReady();

  platform::request("getAppContext");

  EXPECT_EQ(platform::timerInterval(), 0.25 * 7.0);
}

TEST_F(TheSharedObject, StaysWhenItIsUnloadedWithARequestPending) {
  isReady();
  platform::request("getAppContext");
  const unsigned long before = platform::sentParcels();

  EXPECT_EQ(dlclose(_library), 0);

  platform::fireTimer();
  EXPECT_EQ(platform::sentParcels(), before + 1); // The response of the timeout.
}

} // namespace
