// SPDX-License-Identifier: Apache-2.0
#include "harness/transfer.h"

#include <cerrno>
#include <sys/socket.h>

namespace benchmarks {

bool sendAll(int socket, const char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) {
      return false;
    }
    const std::size_t done = sent < 0 ? 0 : static_cast<std::size_t>(sent);
    bytes += done;
    size -= done;
  }
  return true;
}

bool receiveAll(int socket, char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t received = recv(socket, bytes, size, 0);
    if (received == 0 || (received < 0 && errno != EINTR)) {
      return false;
    }
    const std::size_t done = received < 0 ? 0 : static_cast<std::size_t>(received);
    bytes += done;
    size -= done;
  }
  return true;
}

} // namespace benchmarks
