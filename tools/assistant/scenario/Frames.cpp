// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Frames.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>

namespace norix::assistant::scenario {
namespace {

using Length = std::uint64_t;

bool sendAll(int socket, const char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = ::send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) {
      return false;
    }
    bytes += sent < 0 ? 0 : sent;
    size -= sent < 0 ? 0 : static_cast<std::size_t>(sent);
  }
  return true;
}

} // namespace

std::pair<Frames, Frames> Frames::pair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error(std::string("cannot make a pair of sockets: ") + std::strerror(errno));
  }
  return {Frames(launch::Descriptor(ends[0])), Frames(launch::Descriptor(ends[1]))};
}

bool Frames::send(const Json &value) const {
  const std::vector<std::uint8_t> bytes = Json::to_cbor(value);
  const Length length = bytes.size();
  std::string frame(sizeof length + bytes.size(), '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  std::memcpy(frame.data() + sizeof length, bytes.data(), bytes.size());
  return sendAll(_socket.get(), frame.data(), frame.size());
}

std::vector<Frames::Json> Frames::receive() {
  std::array<char, 65536> chunk;
  ssize_t size = 0;
  while ((size = recv(_socket.get(), chunk.data(), chunk.size(), MSG_DONTWAIT)) > 0) {
    _begun.append(chunk.data(), static_cast<std::size_t>(size));
  }
  _hasEnded = size == 0 || (errno != EAGAIN && errno != EINTR);

  std::vector<Json> values;
  std::size_t at = 0;
  Length length = 0;
  while (_begun.size() - at >= sizeof length) {
    std::memcpy(&length, &_begun[at], sizeof length);
    if (_begun.size() - at - sizeof length < length) {
      break;
    }
    at += sizeof length;
    values.push_back(Json::from_cbor(&_begun[at], &_begun[at] + length));
    at += length;
  }
  _begun.erase(0, at);
  return values;
}

} // namespace norix::assistant::scenario
