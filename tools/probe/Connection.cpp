// SPDX-License-Identifier: Apache-2.0
#include "probe/Connection.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace norix::probe {
namespace {

// Away from the small numbers, which applications close one by one.
constexpr int kFirstDescriptor = 200;

int openSocket() {
  const int low = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (low < 0) {
    return -1;
  }
  const int high = fcntl(low, F_DUPFD_CLOEXEC, kFirstDescriptor);
  if (high < 0) {
    return low;
  }
  ::close(low);
  return high;
}

} // namespace

bool Connection::open(const char *path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (std::strlen(path) >= sizeof address.sun_path) {
    return false;
  }
  std::strcpy(address.sun_path, path);

  _descriptor = openSocket();
  if (_descriptor < 0) {
    return false;
  }
  struct stat status = {};
  if (fstat(_descriptor, &status) != 0
      || connect(_descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
    ::close(_descriptor);
    _descriptor = -1;
    return false;
  }
  _device = status.st_dev;
  _inode = status.st_ino;
  return true;
}

std::size_t Connection::send(const char *bytes, std::size_t size) {
  if (!isStillOurs()) {
    _descriptor = -1;
    return 0;
  }
  const ssize_t sent = ::send(_descriptor, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
  if (sent >= 0) {
    return static_cast<std::size_t>(sent);
  }
  if (errno != EAGAIN && errno != EINTR) {
    close();
  }
  return 0;
}

void Connection::close() {
  if (isStillOurs()) {
    ::close(_descriptor);
  }
  _descriptor = -1;
}

bool Connection::isStillOurs() const {
  struct stat status = {};
  return _descriptor >= 0 && fstat(_descriptor, &status) == 0 && status.st_dev == _device
         && status.st_ino == _inode;
}

} // namespace norix::probe
