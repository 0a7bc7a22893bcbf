// SPDX-License-Identifier: Apache-2.0
#include "destination.h"

#include "bounds.h"

#include <standardStreams.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace platform::dlog {
namespace {

constexpr mode_t kFileMode = 0644;

// Suppresses the signals of a failed write: SIGPIPE of a broken pipe, SIGXFSZ of a file at its size
// limit. During its lifetime they are blocked in this thread, and swallow() consumes the one that
// the write raised. A signal that was pending before stays pending.
class SignalGuard {
public:
  SignalGuard() {
    sigemptyset(&_signals);
    sigaddset(&_signals, SIGPIPE);
    sigaddset(&_signals, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &_signals, &_before);
    sigemptyset(&_pending);
    // Only a blocked signal can be pending.
    if (sigismember(&_before, SIGPIPE) == 1 || sigismember(&_before, SIGXFSZ) == 1) {
      sigpending(&_pending);
    }
  }
  SignalGuard(const SignalGuard &) = delete;
  SignalGuard &operator=(const SignalGuard &) = delete;
  ~SignalGuard() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

  void swallow(int signal) const {
    if (sigismember(&_pending, signal) == 1) {
      return;
    }
    constexpr timespec kAtOnce{0, 0};
    sigset_t raised;
    sigemptyset(&raised);
    sigaddset(&raised, signal);
    while (sigtimedwait(&raised, nullptr, &kAtOnce) < 0 && errno == EINTR) {
    }
  }

private:
  sigset_t _signals;
  sigset_t _before;
  sigset_t _pending;
};

// Whether a failed write may be tried again.
bool isWorthRetrying(int descriptor, int patienceMs) {
  if (errno == EINTR) {
    return true;
  }
  if (errno != EAGAIN) {
    return false;
  }
  pollfd room{descriptor, POLLOUT, 0};
  return poll(&room, 1, patienceMs) > 0;
}

// Returns 0, or the error number if not all was written.
int writeWhole(int descriptor, std::string_view bytes, int patienceMs) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0) {
      return EIO;
    } else if (!isWorthRetrying(descriptor, patienceMs)) {
      return errno;
    }
  }
  return 0;
}

int writeGuarded(int descriptor, std::string_view bytes, int patienceMs) {
  const SignalGuard guard;
  const int error = writeWhole(descriptor, bytes, patienceMs);
  if (error == EPIPE) {
    guard.swallow(SIGPIPE);
  } else if (error == EFBIG) {
    guard.swallow(SIGXFSZ);
  } else if (error == EBADF) {
    occupyStandardStreams(); // the next descriptor of the application must not become the log
  }
  return error;
}

// Opens the file for appending. Non-blocking: a named pipe without a reader is an error instead of
// blocking the application.
int openLog(const char *path) {
  return aboveStandardStreams(
      open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kFileMode));
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
}

bool Destination::write(std::string_view bytes) const {
  const int patienceMs = _isStalled.load(std::memory_order_relaxed) ? 0 : kPatienceMs;
  const int error = writeGuarded(_descriptor, bytes, patienceMs);
  _isStalled.store(error == EAGAIN, std::memory_order_relaxed);
  return error == 0;
}

void writeToStandardError(std::string_view bytes) {
  (void)writeGuarded(STDERR_FILENO, bytes, kPatienceMs);
}

} // namespace platform::dlog
