// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_SEND_QUEUE_H
#define PLATFORM_RPC_PORT_WIRE_SEND_QUEUE_H

#include "wire/Buffer.h"
#include "wire/OutgoingMessage.h"

#include <cstddef>
#include <sys/types.h>
#include <vector>

namespace platform::rpc_port {

/// The outcome of sending. Overflow: the peer does not read, and the queue is full.
enum class SendOutcome { Taken, Overflow, Broken };

/// A non-blocking sender: queues what the socket does not take at once, until flush().
class SendQueue {
public:
  /// Sends one message, or keeps its rest.
  /// @throw std::bad_alloc, and part of the message may have been sent: the connection is of no
  /// more use.
  SendOutcome send(int socket, OutgoingMessage &message);

  /// Sends what has been kept, as far as the socket takes it. @return false: the peer is gone.
  bool flush(int socket);

  bool empty() const { return _segments.empty(); }
  void clear();

private:
  /// Queued bytes, of which `sent` have been sent.
  struct Segment {
    Buffer bytes;
    std::size_t sent;
    bool isShared;
  };

  SendOutcome keepBehindOthers(int socket, OutgoingMessage &message);
  void keep(OutgoingMessage &message);
  void keepCopy(const void *bytes, std::size_t size);

  std::vector<Segment> _segments;
  std::size_t _size = 0;
  /// Bytes left of the message that found the queue empty, which the bound does not count.
  std::size_t _leading = 0;
};

} // namespace platform::rpc_port

#endif
