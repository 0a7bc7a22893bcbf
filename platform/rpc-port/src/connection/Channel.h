// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_CHANNEL_H
#define PLATFORM_RPC_PORT_CONNECTION_CHANNEL_H

#include "loop/FdWatch.h"
#include "socket/Descriptor.h"
#include "wire/FrameReader.h"
#include "wire/Inbox.h"
#include "wire/SendQueue.h"

#include <cstddef>

namespace platform::rpc_port {

/// One of the two sockets of a connection: frames in, frames out, and nothing ever waits.
class Channel final : private FdWatch::Target {
public:
  /// Who is told that the loop saw something. It may destroy the channel from inside the call.
  class Listener {
  public:
    virtual void channelReady(Channel &channel, FdWatch::Events events) = 0;

  protected:
    ~Listener() = default;
  };

  /// What receive() found. Ended: the peer has closed, or sent what no peer of ours sends.
  enum class Input { More, Drained, Ended };

  Channel(Descriptor socket, FrameKind greeting);

  /// Joins the loop, or changes who is told. @return false when Ecore does not take it.
  bool attach(Listener &listener, bool reading);
  /// Whether input wakes the loop. A hang-up always does, as does room for what has to be sent.
  void setReading(bool reading);

  Input receive();
  Inbox &inbox() { return _inbox; }
  bool isGreeted() const { return _reader.isGreeted() && !_inbox.empty(); }

  SendOutcome send(OutgoingMessage &message);
  /// @return false when the peer takes nothing any more.
  bool flush();

  /**
   * @brief Waits until there is input, and meanwhile sends what is to be sent.
   * @return false when `seconds` are over.
   */
  bool waitForInput(double seconds);

  /// Ends it for both sides at once; what the peer has not read yet, it still can.
  void shutdown();
  /// Leaves the loop and closes the socket. What has arrived is forgotten.
  void close();
  int descriptor() const { return _socket.get(); }

private:
  void descriptorReady(FdWatch::Events events) override;
  bool takeIn(std::size_t size);
  void updateWatch() { _watch.update(_isReading, !_queue.empty()); }

  Descriptor _socket;
  FdWatch _watch;
  Listener *_listener = nullptr;
  bool _isReading = false;
  bool _hasEnded = false;
  FrameReader _reader;
  Inbox _inbox;
  SendQueue _queue;
};

} // namespace platform::rpc_port

#endif
