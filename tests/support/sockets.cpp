// SPDX-License-Identifier: Apache-2.0
#include "support/sockets.h"

#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>

namespace support {
namespace {

constexpr int kBacklog = 8;

sockaddr_un addressOf(const std::string &path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
  return address;
}

FileDescriptor newSocket(int flags) {
  return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

} // namespace

FileDescriptor connectTo(const std::string &path, int flags) {
  FileDescriptor made = newSocket(flags);
  const sockaddr_un address = addressOf(path);
  if (connect(made.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    made.close();
  }
  return made;
}

FileDescriptor listenAt(const std::string &path, int flags) {
  FileDescriptor made = newSocket(flags);
  const sockaddr_un address = addressOf(path);
  if (bind(made.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
      || listen(made.get(), kBacklog) != 0) {
    made.close();
  }
  return made;
}

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

} // namespace support
