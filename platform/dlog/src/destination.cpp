// SPDX-License-Identifier: Apache-2.0
#include "destination.h"

#include "bounds.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr mode_t kFileMode = 0644;

/**
 * Keeps the SIGPIPE of a write from the application: while this lives the signal is held back in
 * this thread, and swallow() takes it away. One that was pending before stays pending.
 */
class BrokenPipeGuard {
public:
  BrokenPipeGuard() {
    sigemptyset(&_brokenPipe);
    sigaddset(&_brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &_brokenPipe, &_before);
    // Only who holds the signal back can have one pending.
    _wasPending = sigismember(&_before, SIGPIPE) == 1 && isPending();
  }
  BrokenPipeGuard(const BrokenPipeGuard &) = delete;
  BrokenPipeGuard &operator=(const BrokenPipeGuard &) = delete;
  ~BrokenPipeGuard() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

  void swallow() const {
    constexpr timespec kAtOnce{0, 0};
    while (!_wasPending && sigtimedwait(&_brokenPipe, nullptr, &kAtOnce) < 0 && errno == EINTR) {
    }
  }

private:
  static bool isPending() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
  }

  sigset_t _brokenPipe;
  sigset_t _before;
  bool _wasPending;
};

/** Whether a failed write may be tried again. */
bool isWorthRetrying(int descriptor) {
  if (errno == EINTR) {
    return true;
  }
  if (errno != EAGAIN) {
    return false;
  }
  pollfd room{descriptor, POLLOUT, 0};
  return poll(&room, 1, kPatienceMs) > 0;
}

bool writeWhole(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || !isWorthRetrying(descriptor)) {
      return false;
    }
  }
  return true;
}

bool writeGuarded(int descriptor, std::string_view bytes) {
  const BrokenPipeGuard guard;
  const bool written = writeWhole(descriptor, bytes);
  if (!written && errno == EPIPE) {
    guard.swallow();
  }
  return written;
}

/**
 * Opens the file for appending. Not blocking: a pipe by that name without a reader is refused
 * instead of stopping the application.
 */
int openLog(const char *path) {
  const int descriptor =
      open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kFileMode);
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  // One of the standard streams is closed: do not let its number make the log take its place.
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return moved;
}

bool isRegularFile(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

Destination::Destination(const char *path) : _descriptor(STDERR_FILENO) {
  if (path == nullptr || *path == '\0') {
    return;
  }

  const int descriptor = openLog(path);
  if (descriptor < 0) {
    const char *reason = strerrordesc_np(errno);
    _complaint.append("cannot append to \"").append(path).append("\": ").append(reason);
    return;
  }
  _descriptor = descriptor;
  _canBreak = !isRegularFile(descriptor);
}

bool Destination::write(std::string_view bytes) const {
  return _canBreak ? writeGuarded(_descriptor, bytes) : writeWhole(_descriptor, bytes);
}

void writeToStandardError(std::string_view bytes) {
  (void)writeGuarded(STDERR_FILENO, bytes);
}

} // namespace platform
