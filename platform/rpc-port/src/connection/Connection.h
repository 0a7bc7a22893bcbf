// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_CONNECTION_H
#define PLATFORM_RPC_PORT_CONNECTION_CONNECTION_H

#include "common/Callback.h"
#include "connection/Channel.h"
#include "loop/Job.h"
#include "loop/Timer.h"
#include "wire/Parcel.h"

#include <array>
#include <cstdint>
#include <memory>
#include <rpc-port.h>
#include <string>

namespace platform::rpc_port {

class Connection;

/// Callbacks of the stub or proxy that owns a connection. Called from the loop, never from inside a
/// call of a port's function.
struct ConnectionHandlers {
  std::weak_ptr<void> owner; ///< Kept alive during a call.
  /// @return Whether there are handlers of messages at all.
  Callback<bool()> hasReceivers;
  /// A message can be taken from `port`. @return 0, or anything else to end the connection.
  Callback<int(Connection &connection, rpc_port_h port)> messageReady;
  /// The connection has ended, and its ports' handles are stale.
  Callback<void(Connection &connection)> ended;
};

/// The other side of a connection, in the names that the application's handlers are given.
struct Peer {
  std::string application; ///< The other side's app id.
  std::string instance;    ///< The connection's own name.
  std::string portName;
};

/// The two sockets of a connection, after the handshake.
struct ConnectionEnds {
  std::unique_ptr<Channel> main;
  std::unique_ptr<Channel> callback;
};

/// The two ports of an established connection, and the events that come from them. Alive as long as
/// its owner or a running call of a handler holds it. Handlers may do anything, so the state is
/// looked at anew after each call of one.
class Connection final : public std::enable_shared_from_this<Connection> {
public:
  /// README.md draws how these follow each other.
  enum class State {
    Open,     ///< At least one port works.
    Draining, ///< Both ports have ended; what the peer sent is still handed out.
    Ending,   ///< This side has ended both; the owner is told in a later turn of the loop.
    Closed    ///< The owner has been told, or has gone.
  };

  /// @param watchesMain Whether a message on the main port raises an event: a stub's does, a proxy
  ///                    waits for its replies there.
  Connection(ConnectionHandlers handlers, Peer peer, ConnectionEnds ends, bool watchesMain);
  ~Connection() = default;
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  /// Makes the ports and joins the loop. @return false without memory, or when Ecore does not take
  /// the sockets: close() has to follow.
  bool open();
  /// Announces, in a later turn, messages that arrived during the handshake or before the first
  /// receiver was added.
  void announceWaiting();
  /// Closes the connection without telling the owner.
  void close();

  const Peer &peer() const { return _peer; }
  /// @return The handle, or nullptr for a port that this side has disconnected.
  rpc_port_h port(rpc_port_port_type_e type) const { return _lines[type].port; }

  // The work of the ports' functions. Results are rpc_port_error_e.
  int send(rpc_port_port_type_e type, OutgoingMessage &message);
  /// @throw std::bad_alloc, and the message stays.
  int takeParcel(rpc_port_port_type_e type, std::unique_ptr<Parcel> &parcel);
  int readRaw(rpc_port_port_type_e type, unsigned char *bytes, std::size_t size);
  /// Ends one port; the connection ends with its second one.
  int disconnect(rpc_port_port_type_e type);

private:
  static constexpr std::uint64_t kNone = ~std::uint64_t{0};

  /// Who has ended a port.
  enum class End { None, Here, Peer };

  /// The state of one port.
  struct Line {
    std::unique_ptr<Channel> channel;
    bool isWatched;
    rpc_port_h port = nullptr;
    /// The number of the message that a running handler has been told of.
    std::uint64_t offered = kNone;
    Channel::Input input = Channel::Input::Drained;
    End end = End::None;

    bool isOffering() const {
      return !channel->inbox().empty() && offered == channel->inbox().frontNumber();
    }
    bool hasMore() const { return isWatched && input == Channel::Input::More; }
    bool isExhausted() const { return !isWatched || (channel->inbox().empty() && !hasMore()); }
  };

  void onTurn();
  void onLonePortIdle();
  void channelReady(Channel &channel, FdWatch::Events events);
  void takeTurn();
  Channel::Input receive(Line &line);
  void receiveForLoop(Line &line);
  void handOut(Line &line, int &budget);
  bool offer(Line &line);
  bool isReceiving() const;
  bool isOver() const;
  void hasTaken(Line &line);
  void planNext();
  bool needsTurn() const;
  void endLine(Line &line, End by);
  void waitForOtherPort();
  void drain();
  void end();
  template <typename Condition>
  bool await(Line &line, Condition isThere);

  ConnectionHandlers _handlers;
  Peer _peer;
  State _state = State::Open;
  std::array<Line, 2> _lines;
  Job _turn;
  /// Runs while one port has ended and the other has not.
  Timer _lonePort;
  bool _isUsed = false; // The other port has been, since the timer was started.
};

} // namespace platform::rpc_port

#endif
