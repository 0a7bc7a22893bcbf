// SPDX-License-Identifier: Apache-2.0
#include "harness/SocketPair.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace benchmarks {

SocketPair::SocketPair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  _own = ends[0];
  _others = ends[1];
  (void)fcntl(_own, F_SETFD, FD_CLOEXEC);
}

SocketPair::~SocketPair() {
  handOver();
  if (_own >= 0) {
    close(_own);
  }
}

void SocketPair::handOver() {
  if (_others >= 0) {
    close(std::exchange(_others, -1));
  }
}

int SocketPair::release() {
  return std::exchange(_own, -1);
}

} // namespace benchmarks
