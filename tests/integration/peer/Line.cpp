// SPDX-License-Identifier: Apache-2.0
#include "integration/peer/Line.h"

#include "support/sockets.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <utility>

namespace integration {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPrefixSize = 8; // The length of what follows it, and the kind.

void require(bool succeeded, const char *what) {
  if (!succeeded) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
  }
}

// As the platform wants them: closed to others.
void makeFolders(const fs::path &folder) {
  if (fs::exists(folder)) {
    return;
  }
  makeFolders(folder.parent_path());
  fs::create_directory(folder);
  fs::permissions(folder, fs::perms::owner_all);
}

} // namespace

Line Line::connectTo(const std::string &path) {
  Line line(support::connectTo(path));
  require(line.isOpen(), "connect");
  return line;
}

Line Line::listenAt(const std::string &path) {
  makeFolders(fs::path(path).parent_path());
  Line line(support::listenAt(path));
  require(line.isOpen(), "listen");
  return line;
}

Line Line::accept() const {
  Line line(support::FileDescriptor(accept4(_socket.get(), nullptr, nullptr, SOCK_CLOEXEC)));
  require(line.isOpen(), "accept");
  return line;
}

void Line::send(const std::string &frame) {
  if (!support::sendAll(_socket.get(), frame.data(), frame.size())) {
    throw Ended();
  }
}

void Line::sendHalf(const std::string &frame) {
  send(frame.substr(0, frame.size() / 2));
}

void Line::sendRest(const std::string &frame) {
  send(frame.substr(frame.size() / 2));
}

std::size_t Line::frameSize() {
  receiveUpTo(kPrefixSize);
  std::uint32_t length = 0;
  std::memcpy(&length, _received.data(), sizeof length);
  return kPrefixSize + length;
}

void Line::receiveUpTo(std::size_t size) {
  std::array<char, 65536> chunk{};
  while (_received.size() < size) {
    const ssize_t count =
        recv(_socket.get(), chunk.data(), std::min(chunk.size(), size - _received.size()), 0);
    if (count <= 0) {
      throw Ended();
    }
    _received.append(chunk.data(), static_cast<std::size_t>(count));
  }
}

void Line::receiveHalf() {
  receiveUpTo(frameSize() / 2);
}

std::string Line::receive() {
  receiveUpTo(frameSize());
  return std::exchange(_received, {}).substr(kPrefixSize);
}

void Line::awaitEnd() {
  std::array<char, 65536> chunk{};
  while (recv(_socket.get(), chunk.data(), chunk.size(), 0) > 0) {
  }
}

} // namespace integration
