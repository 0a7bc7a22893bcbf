// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_INBOX_H
#define PLATFORM_RPC_PORT_WIRE_INBOX_H

#include "wire/Frame.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace platform::rpc_port {

/// The queue of received frames of one socket.
class Inbox {
public:
  bool empty() const { return _first == _frames.size(); }
  void push(Frame frame) { _frames.push_back(std::move(frame)); }
  Frame &front() { return _frames[_first]; }

  /// The sequence number of the frame in front, or of the next one to arrive.
  std::uint64_t frontNumber() const { return _taken; }

  Frame pop() {
    Frame frame = std::move(_frames[_first]);
    ++_first;
    ++_taken;
    _rawOffset = 0;
    if (empty()) {
      _frames.clear();
      _first = 0;
    }
    return frame;
  }

  /// Takes exactly `size` bytes from the raw frames in front. @return false: so many are not there.
  bool readRaw(unsigned char *bytes, std::size_t size);
  bool hasRaw(std::size_t size) const;
  void clear();

private:
  std::vector<Frame> _frames;
  std::size_t _first = 0;
  std::size_t _rawOffset = 0;
  std::uint64_t _taken = 0;
};

} // namespace platform::rpc_port

#endif
