// SPDX-License-Identifier: Apache-2.0
#include "support/HostileSocket.h"

#include "support/check.h"

#include <array>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace fuzz {

namespace rpc = platform::rpc_port;

namespace {

std::string_view textOf(const rpc::Buffer &buffer) {
  return {reinterpret_cast<const char *>(buffer.data()), buffer.size()};
}

} // namespace

void HostileSocket::connectTo(const std::string &path) {
  _socket = rpc::Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  check(path.size() < sizeof address.sun_path, "the path fits in an address");
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  if (connect(_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    _socket.close();
  }
}

bool HostileSocket::acceptFrom(int listening) {
  rpc::Descriptor accepted(accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!accepted) {
    return false;
  }
  _socket = std::move(accepted);
  return true;
}

void HostileSocket::send(std::string_view bytes) {
  if (_socket) {
    (void)::send(_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
}

void HostileSocket::sendFrame(rpc::FrameKind kind, std::string_view payload) {
  const rpc::FramePrefix prefix{static_cast<std::uint32_t>(payload.size()), kind};
  std::string bytes(reinterpret_cast<const char *>(&prefix), sizeof prefix);
  send(bytes.append(payload));
}

void HostileSocket::sendHello(const rpc::Hello &hello) {
  sendFrame(rpc::FrameKind::Hello, textOf(rpc::encodeHello(hello)));
}

void HostileSocket::sendWelcome() {
  sendFrame(rpc::FrameKind::Welcome, textOf(rpc::encodeWelcome()));
}

void HostileSocket::sendParcel(std::string_view fields) {
  std::string payload(rpc::kParcelHeaderSize, '\0'); // A header of zeros is one, without a tag.
  sendFrame(rpc::FrameKind::Parcel, payload.append(fields));
}

std::string HostileSocket::receive() {
  std::string received;
  std::array<char, 4096> part{};
  ssize_t size = 0;
  while (_socket && (size = recv(_socket.get(), part.data(), part.size(), MSG_DONTWAIT)) > 0) {
    received.append(part.data(), static_cast<std::size_t>(size));
  }
  return received;
}

void HostileSocket::endSending() {
  if (_socket) {
    (void)shutdown(_socket.get(), SHUT_WR);
  }
}

} // namespace fuzz
