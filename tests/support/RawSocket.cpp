// SPDX-License-Identifier: Apache-2.0
#include "support/RawSocket.h"

#include "support/sockets.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>

namespace support {
namespace {

std::unique_ptr<RawSocket> owned(FileDescriptor descriptor) {
  return descriptor.isOpen() ? std::make_unique<RawSocket>(std::move(descriptor)) : nullptr;
}

} // namespace

std::unique_ptr<RawSocket> RawSocket::connectTo(const std::string &path) {
  return owned(support::connectTo(path, SOCK_NONBLOCK));
}

std::unique_ptr<RawSocket> RawSocket::listenAt(const std::string &path) {
  return owned(support::listenAt(path, SOCK_NONBLOCK));
}

std::unique_ptr<RawSocket> RawSocket::acceptFrom(int listening) {
  return owned(FileDescriptor(accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)));
}

bool RawSocket::send(std::string_view what) {
  return ::send(descriptor(), what.data(), what.size(), MSG_NOSIGNAL | MSG_DONTWAIT)
         == static_cast<ssize_t>(what.size());
}

std::string RawSocket::receive() {
  std::string all;
  std::array<char, 65536> buffer{};
  for (;;) {
    const ssize_t size = recv(descriptor(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size <= 0) {
      return all;
    }
    all.append(buffer.data(), static_cast<std::size_t>(size));
  }
}

bool RawSocket::hasEnded() {
  char byte = 0;
  const ssize_t size = recv(descriptor(), &byte, 1, MSG_DONTWAIT | MSG_PEEK);
  return size == 0 || (size < 0 && errno == ECONNRESET);
}

} // namespace support
