// SPDX-License-Identifier: Apache-2.0
#include "standardStreams.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

void occupyStandardStreams() noexcept {
  const int error = errno;
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) >= 0) {
      continue;
    }
    // O_PATH: neither readable nor writable. Programs that the process starts inherit it, for they
    // are no better off with a closed stream.
    const int placeholder = open("/dev/null", O_PATH);
    if (placeholder > STDERR_FILENO) {
      close(placeholder); // another thread was quicker
    }
  }
  errno = error;
}

int aboveStandardStreams(int descriptor) noexcept {
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(descriptor);
  errno = error;
  return moved;
}

} // namespace platform
