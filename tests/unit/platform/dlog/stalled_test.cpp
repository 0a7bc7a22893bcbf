// SPDX-License-Identifier: Apache-2.0
//
// The log on a pipe that nobody reads. The log's library finds this program's poll() before that of
// the system: the test sees how often it would wait.
#include "support/Child.h"

#include <dlog.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int waits = 0;
bool isCounting = false;

} // namespace

#pragma GCC visibility push(default)
extern "C" int poll(pollfd *descriptors, nfds_t count, int milliseconds) {
  timespec timeout{milliseconds / 1000, milliseconds % 1000 * 1000000L};
  if (isCounting && milliseconds != 0) {
    ++waits;
    timeout = {0, 0};
  }
  return ppoll(descriptors, count, milliseconds < 0 ? nullptr : &timeout, nullptr);
}
#pragma GCC visibility pop

namespace {

// A named pipe that is open for reading and read by nobody.
class AnUnreadPipe : public testing::Test {
protected:
  AnUnreadPipe() { EXPECT_EQ(mkfifo(_path.c_str(), 0600), 0); }

  // Runs in a child whose log goes into the pipe.
  int statusOf(const std::function<int(int reader)> &function) const {
    return inChild({{"DLOG_FILE", _path}},
                   [&] {
                     const int reader = open(_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
                     isCounting = true;
                     return function(reader);
                   })
        .status;
  }

  static bool print() { return dlog_print(DLOG_ERROR, "TAG", "%s", "text") > 0; }

  static void fill() {
    while (print()) {
    }
  }

  static void empty(int reader) {
    char bytes[4096];
    while (read(reader, bytes, sizeof bytes) > 0) {
    }
  }

  const TemporaryFolder _folder;
  const std::string _path = _folder / "log";
};

TEST_F(AnUnreadPipe, IsWaitedForOnce) {
  const int status = statusOf([](int) {
    fill();
    for (int i = 0; i < 100; ++i) {
      print();
    }
    return waits;
  });

  EXPECT_EQ(status, 1);
}

TEST_F(AnUnreadPipe, TakesLinesAgainWhenItIsRead) {
  const int status = statusOf([](int reader) {
    fill();
    empty(reader);
    return print() ? 0 : 1;
  });

  EXPECT_EQ(status, 0);
}

TEST_F(AnUnreadPipe, IsWaitedForOnceMoreAfterItWasRead) {
  const int status = statusOf([](int reader) {
    fill();
    empty(reader);
    fill();
    return waits;
  });

  EXPECT_EQ(status, 2);
}

} // namespace
