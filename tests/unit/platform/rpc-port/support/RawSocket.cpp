// SPDX-License-Identifier: Apache-2.0
#include "RawSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace rpc_test {

namespace {

sockaddr_un addressOf(const std::string &path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

int newSocket() {
  return socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

} // namespace

std::string frame(std::uint32_t kind, const std::string &payload) {
  return bytes(static_cast<std::uint32_t>(payload.size())) + bytes(kind) + payload;
}

std::string hello(std::uint16_t type, const std::string &instance, const std::string &sender) {
  const std::string magic = "RPCP";
  return magic + bytes(std::uint16_t{1}) + bytes(type)
         + bytes(static_cast<std::uint16_t>(instance.size()))
         + bytes(static_cast<std::uint16_t>(sender.size())) + instance + sender;
}

std::string parcel(const std::string &fields) {
  return std::string(24, '\0') + fields;
}

std::string text(const std::string &characters) {
  return bytes(static_cast<std::uint32_t>(characters.size() + 1)) + characters + '\0';
}

std::unique_ptr<RawSocket> RawSocket::connectTo(const std::string &path) {
  auto socket = std::make_unique<RawSocket>(newSocket());
  const sockaddr_un address = addressOf(path);
  const int result =
      connect(socket->_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address);
  return result == 0 ? std::move(socket) : nullptr;
}

std::unique_ptr<RawSocket> RawSocket::listenAt(const std::string &path) {
  auto socket = std::make_unique<RawSocket>(newSocket());
  const sockaddr_un address = addressOf(path);
  const int bound =
      bind(socket->_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address);
  return bound == 0 && listen(socket->_descriptor, 8) == 0 ? std::move(socket) : nullptr;
}

std::unique_ptr<RawSocket> RawSocket::accept() {
  const int descriptor = accept4(_descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  return descriptor >= 0 ? std::make_unique<RawSocket>(descriptor) : nullptr;
}

bool RawSocket::send(const std::string &what) {
  return ::send(_descriptor, what.data(), what.size(), MSG_NOSIGNAL | MSG_DONTWAIT)
         == static_cast<ssize_t>(what.size());
}

std::string RawSocket::receive() {
  std::string all;
  std::array<char, 65536> buffer{};
  for (;;) {
    const ssize_t size = recv(_descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size <= 0) {
      return all;
    }
    all.append(buffer.data(), static_cast<std::size_t>(size));
  }
}

bool RawSocket::hasEnded() {
  char byte = 0;
  const ssize_t size = recv(_descriptor, &byte, 1, MSG_DONTWAIT | MSG_PEEK);
  return size == 0 || (size < 0 && errno == ECONNRESET);
}

void RawSocket::close() {
  if (_descriptor >= 0) {
    ::close(_descriptor);
    _descriptor = -1;
  }
}

} // namespace rpc_test
