// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_PEER_LINE_H
#define NORIX_TESTS_INTEGRATION_PEER_LINE_H

#include "support/FileDescriptor.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace integration {

// The other side has closed.
struct Ended : std::runtime_error {
  Ended() : std::runtime_error("ended") {}
};

// A blocking socket that sends and receives frames, or halves of them. Its functions throw Ended.
class Line {
public:
  Line() = default;
  static Line connectTo(const std::string &path);
  // A socket that listens there; missing folders are created.
  static Line listenAt(const std::string &path);
  Line accept() const;

  void sendHalf(const std::string &frame);
  // The other half of a frame.
  void sendRest(const std::string &frame);
  void send(const std::string &frame);

  // The next frame's payload.
  std::string receive();
  // The first half of the next frame; receive() then gives the whole.
  void receiveHalf();
  // Discards what arrives until the other side closes.
  void awaitEnd();
  bool isOpen() const { return _socket.isOpen(); }

private:
  explicit Line(support::FileDescriptor socket) : _socket(std::move(socket)) {}
  void receiveUpTo(std::size_t size);
  std::size_t frameSize();

  support::FileDescriptor _socket;
  std::string _received; // The beginning of the next frame.
};

} // namespace integration

#endif
