// SPDX-License-Identifier: Apache-2.0
#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"

#include <app_common.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {

using fake::Heap;
using fake::library;
using fake::platform;
using testing::IsEmpty;
using testing::SizeIs;

class TheFakeHeap : public fake::NothingLeft {};

TEST_F(TheFakeHeap, KnowsTheBlocksThatTheLibraryAllocates) {
  auto block = library([] { return std::make_unique<int>(1); });
  void *raw = library([] { return std::malloc(10); });
  char *text = library([] { return strdup("text"); });

  EXPECT_THAT(Heap::instance().blocks(), SizeIs(3));

  block.reset();
  std::free(raw);
  std::free(text);
  EXPECT_THAT(Heap::instance().blocks(), IsEmpty());
}

TEST_F(TheFakeHeap, LeavesTheBlocksOfOthersAlone) {
  const auto block = std::make_unique<int>(1);

  EXPECT_THAT(Heap::instance().blocks(), IsEmpty());
}

TEST_F(TheFakeHeap, KnowsTheTextsThatThePlatformHandsOut) {
  platform().application.id = "org.example.music";
  char *appId = nullptr;

  library([&appId] { return app_get_id(&appId); });

  ASSERT_THAT(Heap::instance().blocks(), SizeIs(1));
  EXPECT_EQ(Heap::instance().blocks().at(appId).owner, Heap::Owner::PlatformText);
  std::free(appId);
}

TEST_F(TheFakeHeap, FailsTheNonThrowingNewThatATestNames) {
  platform().faults.fail(fake::kNothrowNew, 2);

  std::unique_ptr<int> first(library([] { return new (std::nothrow) int; }));
  std::unique_ptr<int> second(library([] { return new (std::nothrow) int; }));
  std::unique_ptr<int> third(library([] { return new (std::nothrow) int; }));

  EXPECT_NE(first, nullptr);
  EXPECT_EQ(second, nullptr);
  EXPECT_NE(third, nullptr);
  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), 3);
}

TEST_F(TheFakeHeap, FailsTheThrowingNewThatATestNames) {
  Heap::instance().failNew(2);

  EXPECT_NO_THROW(library([] { return std::make_unique<int>(1); }));
  EXPECT_THROW(library([] { return std::make_unique<int>(1); }), std::bad_alloc);
  EXPECT_NO_THROW(library([] { return std::make_unique<int>(1); }));
}

TEST_F(TheFakeHeap, FailsTheStrdupThatATestNames) {
  platform().faults.fail("strdup");

  EXPECT_EQ(library([] { return strdup("text"); }), nullptr);
}

int runs = 0;
pthread_once_t flag = PTHREAD_ONCE_INIT;

TEST_F(TheFakeHeap, ForgetsWhatRanOnceWithThePlatform) {
  const auto run = [] { library([] { return pthread_once(&flag, [] { ++runs; }); }); };

  run();
  run();
  EXPECT_EQ(runs, 1);

  fake::resetPlatform();
  run();
  EXPECT_EQ(runs, 2);
}

} // namespace
