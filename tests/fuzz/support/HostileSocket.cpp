// SPDX-License-Identifier: Apache-2.0
#include "support/HostileSocket.h"

#include <cstdint>
#include <sys/socket.h>
#include <utility>

namespace fuzz {

namespace rpc = platform::rpc_port;

namespace {

std::string_view textOf(const rpc::Buffer &buffer) {
  return {reinterpret_cast<const char *>(buffer.data()), buffer.size()};
}

} // namespace

void HostileSocket::connectTo(const std::string &path) {
  _socket = support::RawSocket::connectTo(path);
}

bool HostileSocket::acceptFrom(int listening) {
  auto accepted = support::RawSocket::acceptFrom(listening);
  if (accepted == nullptr) {
    return false;
  }
  _socket = std::move(accepted);
  return true;
}

void HostileSocket::send(std::string_view bytes) {
  if (isOpen()) {
    (void)_socket->send(bytes);
  }
}

void HostileSocket::sendFrame(rpc::FrameKind kind, std::string_view payload) {
  send(support::frame(static_cast<std::uint32_t>(kind), std::string(payload)));
}

void HostileSocket::sendHello(const rpc::Hello &hello) {
  sendFrame(rpc::FrameKind::Hello, textOf(rpc::encodeHello(hello)));
}

void HostileSocket::sendWelcome() {
  sendFrame(rpc::FrameKind::Welcome, textOf(rpc::encodeWelcome()));
}

void HostileSocket::sendParcel(std::string_view fields) {
  sendFrame(rpc::FrameKind::Parcel, support::parcel(std::string(fields)));
}

std::string HostileSocket::receive() {
  return isOpen() ? _socket->receive() : std::string();
}

void HostileSocket::endSending() {
  if (isOpen()) {
    (void)shutdown(_socket->descriptor(), SHUT_WR);
  }
}

} // namespace fuzz
