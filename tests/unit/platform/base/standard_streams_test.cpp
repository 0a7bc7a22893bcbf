// SPDX-License-Identifier: Apache-2.0
//
// What takes the place of closed standard streams.
#include "support/inChild.h"

#include <standardStreams.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kStreams = 3;

bool isOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

// Whether reading from and writing to a descriptor fail as for a closed one.
bool isNeitherReadNorWritten(int descriptor) {
  char byte = 'x';
  return read(descriptor, &byte, 1) < 0 && errno == EBADF && write(descriptor, &byte, 1) < 0
         && errno == EBADF;
}

// Whether a condition holds in a child process, which may close what it likes.
bool holdsInChild(const std::function<bool()> &condition) {
  return support::inChild([&condition] { return condition() ? 0 : 1; }).status == 0;
}

// Bit n of the parameter says that descriptor n is closed.
class StandardStreams : public testing::TestWithParam<int> {
protected:
  static bool isClosed(int stream) { return (GetParam() >> stream & 1) != 0; }

  static void closeThem() {
    for (int stream = 0; stream < kStreams; ++stream) {
      if (isClosed(stream)) {
        close(stream);
      }
    }
  }
};

INSTANTIATE_TEST_SUITE_P(InEachCombinationOfClosedOnes, StandardStreams, testing::Range(0, 8));

TEST_P(StandardStreams, AreAllOpenWhenTheyAreOccupied) {
  EXPECT_TRUE(holdsInChild([] {
    closeThem();
    platform::occupyStandardStreams();
    return isOpen(0) && isOpen(1) && isOpen(2);
  }));
}

TEST_P(StandardStreams, FailLikeClosedOnesWhenTheyAreOccupied) {
  EXPECT_TRUE(holdsInChild([] {
    closeThem();
    platform::occupyStandardStreams();
    bool fail = true;
    for (int stream = 0; stream < kStreams; ++stream) {
      fail = fail && (!isClosed(stream) || isNeitherReadNorWritten(stream));
    }
    return fail;
  }));
}

TEST_P(StandardStreams, AreNotTakenByTheNextDescriptor) {
  EXPECT_TRUE(holdsInChild([] {
    closeThem();
    platform::occupyStandardStreams();
    return open("/dev/null", O_RDWR | O_CLOEXEC) >= kStreams;
  }));
}

TEST_P(StandardStreams, LeaveNothingElseOpenWhenTheyAreOccupied) {
  EXPECT_TRUE(holdsInChild([] {
    const int next = open("/dev/null", O_RDWR | O_CLOEXEC);
    close(next);
    closeThem();
    platform::occupyStandardStreams();
    return !isOpen(next);
  }));
}

TEST(OpenStandardStreams, AreLeftAsTheyAre) {
  EXPECT_TRUE(holdsInChild([] {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], 1) < 0) {
      return false;
    }
    platform::occupyStandardStreams();
    char byte = '?';
    return write(1, "x", 1) == 1 && read(ends[0], &byte, 1) == 1 && byte == 'x';
  }));
}

TEST(OccupyingStandardStreams, LeavesErrnoAsItIs) {
  EXPECT_TRUE(holdsInChild([] {
    close(0);
    errno = ENOTTY;
    platform::occupyStandardStreams();
    return errno == ENOTTY;
  }));
}

TEST(ADescriptor, AboveTheStandardStreamsIsLeftAsItIs) {
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);

  EXPECT_EQ(platform::aboveStandardStreams(descriptor), descriptor);
  EXPECT_EQ(platform::aboveStandardStreams(-1), -1);
  close(descriptor);
}

TEST(ADescriptor, InTheirPlaceIsMovedAboveThem) {
  EXPECT_TRUE(holdsInChild([] {
    close(1);
    const int taken = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const int moved = platform::aboveStandardStreams(taken);
    return taken == 1 && moved >= kStreams && !isOpen(1) && write(moved, "x", 1) < 0
           && errno == ENOSPC && fcntl(moved, F_GETFD) == FD_CLOEXEC;
  }));
}

TEST(ADescriptor, ThatFindsNoOtherNumberIsClosed) {
  EXPECT_TRUE(holdsInChild([] {
    close(1);
    const int taken = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const rlimit none{kStreams, kStreams};
    setrlimit(RLIMIT_NOFILE, &none);
    return platform::aboveStandardStreams(taken) == -1 && errno == EINVAL && !isOpen(1);
  }));
}

} // namespace
