// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_PEER_LINE_H
#define NORIX_TESTS_INTEGRATION_PEER_LINE_H

#include "integration/harness/Process.h"

#include <stdexcept>
#include <string>

namespace integration {

// The other side has closed.
struct Ended : std::runtime_error {
  Ended() : std::runtime_error("ended") {}
};

// A socket that sends and receives as much as it is told to, however long that takes. Functions
// throw Ended.
class Line {
public:
  Line() = default;
  static Line connectTo(const std::string &path);
  // A socket that listens there, in folders that are made if need be.
  static Line listenAt(const std::string &path);
  Line accept() const;

  void sendHalf(const std::string &frame);
  // What is left of the frame of which the first half was sent.
  void sendRest(const std::string &frame);
  void send(const std::string &frame);

  // The next frame's payload.
  std::string receive();
  // The first half of the next frame; receive() then gives the whole.
  void receiveHalf();
  // Drops all that comes until the other side closes.
  void awaitEnd();
  bool isOpen() const { return _socket.get() >= 0; }

private:
  explicit Line(int socket) : _socket(socket) {}
  void receiveUpTo(std::size_t size);
  std::size_t frameSize();

  FileDescriptor _socket;
  std::string _received; // Of the frame that is coming.
};

} // namespace integration

#endif
