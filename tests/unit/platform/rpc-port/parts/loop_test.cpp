// SPDX-License-Identifier: Apache-2.0
// What a forked child forgets of its parent's loop.
#include "support/Runtime.h"

#include <Ecore.h>
#include <gtest/gtest.h>
#include <loop/EcoreUse.h>
#include <loop/FdWatch.h>
#include <loop/Job.h>
#include <loop/JobQueue.h>
#include <loop/Timer.h>
#include <unistd.h>

namespace rpc_test {
namespace {

using namespace platform::rpc_port;

class TheLoop : public Runtime {
protected:
  Callback<void()> note() { return Callback<void()>::to<&TheLoop::count>(*this); }
  void count() { ++calls; }

  EcoreUse ecore;
  int calls = 0;
};

TEST_F(TheLoop, CallsNoTimerOfThoseThatWereAllStopped) {
  Timer first(note());
  Timer second(note());
  first.start(0);
  second.start(0);

  Timer::stopAll();
  settle();

  EXPECT_FALSE(first.isRunning() || second.isRunning());
  EXPECT_EQ(calls, 0);
}

TEST_F(TheLoop, CallsATimerThatIsStartedAgainAfterAllWereStopped) {
  Timer timer(note());
  timer.start(0);
  Timer::stopAll();
  timer.start(0);

  EXPECT_TRUE(runUntil([this] { return calls == 1; }));
}

TEST_F(TheLoop, DoesNoJobThatWasPlannedBeforeItWasReopened) {
  Job before(note());
  before.plan();

  ASSERT_TRUE(JobQueue::get().reopen());
  settle();

  EXPECT_EQ(calls, 0);
}

TEST_F(TheLoop, DoesWhatIsPlannedAfterItWasReopened) {
  Job job(note());
  job.plan();
  ASSERT_TRUE(JobQueue::get().reopen());
  job.plan();

  EXPECT_TRUE(runUntil([this] { return calls == 1; }));
}

class AWatchedPipe : public TheLoop {
protected:
  void SetUp() override { ASSERT_EQ(pipe(ends), 0); }
  void TearDown() override {
    watch.stop();
    close(ends[0]);
    close(ends[1]);
  }

  void onReady(FdWatch::Events /*events*/) { ++calls; }

  int ends[2] = {-1, -1};
  FdWatch watch{FdWatch::Ready::to<&AWatchedPipe::onReady>(*this)};
};

TEST_F(AWatchedPipe, IsNotLookedAtOnceAllWatchesWereStopped) {
  ASSERT_TRUE(watch.start(ends[0], true, false));
  ASSERT_EQ(write(ends[1], "!", 1), 1);

  FdWatch::stopAll();
  settle();

  EXPECT_FALSE(watch.isRunning());
  EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace rpc_test
