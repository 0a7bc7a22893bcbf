// SPDX-License-Identifier: Apache-2.0
//
// The log on a standard error that is not as it should be.
#include "support/Child.h"

#include <csignal>
#include <cstring>
#include <dlog.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <thread>
#include <unistd.h>

namespace {

// Makes standard error a pipe. Returns the end to read from.
int makeStandardErrorAPipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    _exit(99);
  }
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  return ends[0];
}

void makeStandardErrorABrokenPipe() {
  close(makeStandardErrorAPipe());
}

// Fills standard error, a pipe, completely, without blocking.
void fillStandardError() {
  fcntl(STDERR_FILENO, F_SETFL, fcntl(STDERR_FILENO, F_GETFL) | O_NONBLOCK);
  const std::string bytes(4096, '.');
  while (write(STDERR_FILENO, bytes.data(), bytes.size()) > 0) {
  }
  while (write(STDERR_FILENO, bytes.data(), 1) > 0) {
  }
}

bool isBrokenPipePending() {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, SIGPIPE) == 1;
}

void holdBrokenPipeBack() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  sigprocmask(SIG_BLOCK, &set, nullptr);
}

int printsNothing() {
  return dlog_print(DLOG_ERROR, "TAG", "x") == DLOG_ERROR_NOT_PERMITTED ? 0 : 1;
}

TEST(AClosedStandardError, IsAnError) {
  const Outcome outcome = inChild({}, [] {
    close(STDERR_FILENO);
    return printsNothing();
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(AClosedStandardError, IsNotReplacedByWhatIsOpenedNext) {
  const Outcome outcome = inChild({}, [] {
    close(STDERR_FILENO);
    const int result = printsNothing();
    const int next = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return result + printsNothing() + (next > STDERR_FILENO ? 0 : 10);
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ABrokenPipe, IsAnErrorAndDoesNotKill) {
  const Outcome outcome = inChild({}, [] {
    std::signal(SIGPIPE, SIG_DFL);
    makeStandardErrorABrokenPipe();
    return printsNothing() + printsNothing();
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ABrokenPipe, DoesNotKillWhenTheFilterIsBadEither) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "A:X"}, {"DLOG_FILE", "/no such folder/x"}}, [] {
    std::signal(SIGPIPE, SIG_DFL);
    makeStandardErrorABrokenPipe();
    return printsNothing();
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ABrokenPipe, CallsNoHandler) {
  const Outcome outcome = inChild({}, [] {
    static volatile std::sig_atomic_t handled = 0;
    std::signal(SIGPIPE, [](int) { handled = 1; });
    makeStandardErrorABrokenPipe();
    return printsNothing() + handled;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ABrokenPipe, LeavesNoSignalPending) {
  const Outcome outcome = inChild({}, [] {
    holdBrokenPipeBack();
    makeStandardErrorABrokenPipe();
    return printsNothing() + (isBrokenPipePending() ? 10 : 0);
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ABrokenPipe, LeavesASignalPendingThatWas) {
  const Outcome outcome = inChild({}, [] {
    holdBrokenPipeBack();
    raise(SIGPIPE);
    makeStandardErrorABrokenPipe();
    return printsNothing() + (isBrokenPipePending() ? 0 : 10);
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ALine, LeavesTheSignalMaskAsItIs) {
  const Outcome outcome = inChild({}, [] {
    sigset_t before;
    sigset_t after;
    sigprocmask(SIG_BLOCK, nullptr, &before);
    dlog_print(DLOG_ERROR, "TAG", "x");
    sigprocmask(SIG_BLOCK, nullptr, &after);
    int changes = 0;
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
      changes += sigismember(&before, signal) != sigismember(&after, signal) ? 1 : 0;
    }
    return changes;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(AFullPipeThatDoesNotBlock, IsWaitedForUntilItIsRead) {
  const Outcome outcome = inChild({}, [] {
    const int reader = makeStandardErrorAPipe();
    fillStandardError();

    std::string content;
    std::thread drain([&] {
      char bytes[4096];
      ssize_t size = 0;
      while ((size = read(reader, bytes, sizeof bytes)) > 0) {
        content.append(bytes, static_cast<std::size_t>(size));
      }
    });
    const int result = dlog_print(DLOG_ERROR, "TAG", "text");
    close(STDERR_FILENO);
    drain.join();

    const std::string line = content.substr(content.find_first_not_of('.'));
    return result > 0 && withoutTimeAndPid(line) == "E/TAG     : text\n" ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(AFullPipeThatDoesNotBlock, IsGivenUpWhenNobodyReads) {
  const Outcome outcome = inChild({}, [] {
    makeStandardErrorAPipe();
    fillStandardError();
    return printsNothing();
  });

  EXPECT_EQ(outcome.status, 0);
}

} // namespace
