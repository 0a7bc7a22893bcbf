// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_CHANNEL_H
#define PLATFORM_RPC_PORT_CONNECTION_CHANNEL_H

#include "common/Callback.h"
#include "common/Descriptor.h"
#include "loop/FdWatch.h"
#include "wire/FrameReader.h"
#include "wire/Inbox.h"
#include "wire/SendQueue.h"

#include <cstddef>
#include <optional>

namespace platform::rpc_port {

/// One of the two sockets of a connection: frames in, frames out, without ever blocking.
class Channel final {
public:
  /// Called when the loop saw something. It may destroy the channel.
  using Listener = Callback<void(Channel &channel, FdWatch::Events events)>;

  /// What receive() found.
  enum class Input {
    More,    ///< There may be more to receive.
    Drained, ///< Nothing is left for now.
    Closed,  ///< The peer has closed the socket, and everything before that is received.
    Invalid  ///< The peer sent what is no frame, or there is no memory for what it sent.
  };

  Channel(Descriptor socket, FrameKind greeting);

  /// Joins the loop, or replaces the listener. @return false when Ecore does not take the socket.
  bool attach(Listener listener, bool reading);
  /// Leaves the loop, which would otherwise report a hang-up again and again.
  void detach() { _watch.stop(); }
  /// Whether the loop watches for input. It always watches for a hang-up, and for room while
  /// messages are queued.
  void setReading(bool reading);

  Input receive();
  /// Whether the peer has not sent anything yet.
  bool isUntouched() const { return _reader.isUntouched(); }
  Inbox &inbox() { return _inbox; }
  SendOutcome send(OutgoingMessage &message);
  /// @return false when the peer takes nothing any more.
  bool flush();

  /// Waits until there is input, and meanwhile flushes the queue.
  /// @return false when `seconds` are over.
  bool waitForInput(double seconds);

  /// Whether the peer has closed its socket, rather than finished sending on it.
  bool isHungUp() const;
  /// Leaves the loop and tells the peer that nothing follows. What has arrived is dropped.
  void finish();
  /// Leaves the loop and closes the socket. What has arrived is dropped; what the system has taken
  /// still reaches the peer.
  void close();
  int descriptor() const { return _socket.get(); }

private:
  void onReady(FdWatch::Events events);
  bool takeIn(std::size_t size);
  void updateWatch() { _watch.update(_isReading, !_queue.empty()); }

  Descriptor _socket;
  FdWatch _watch;
  std::optional<Listener> _listener;
  bool _isReading = false;
  std::optional<Input> _end; // Closed or Invalid, once receive() has found that.
  FrameReader _reader;
  Inbox _inbox;
  SendQueue _queue;
};

} // namespace platform::rpc_port

#endif
