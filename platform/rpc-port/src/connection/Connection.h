// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_CONNECTION_H
#define PLATFORM_RPC_PORT_CONNECTION_CONNECTION_H

#include "connection/Channel.h"
#include "loop/Job.h"

#include <array>
#include <cstdint>
#include <memory>
#include <rpc-port.h>
#include <string>

namespace platform::rpc_port {

class Connection;

/// The stub or proxy that a connection belongs to. Called from the loop, never from a port's call.
class ConnectionOwner {
public:
  /// @return Whether anybody listens to messages at all.
  virtual bool hasReceivers() const = 0;
  /// A message lies ready on `port`. @return 0, or anything else to end the connection.
  virtual int messageReady(Connection &connection, rpc_port_h port) = 0;
  /// The connection is over, and its ports are dead.
  virtual void connectionEnded(Connection &connection) = 0;

protected:
  ~ConnectionOwner() = default;
};

/// Whom a connection leads to, and by which names the application's handlers know it.
struct Peer {
  std::string application; ///< The other side's app id.
  std::string instance;    ///< The connection's own name.
  std::string portName;
};

/// The two sockets of a connection, both greeted.
struct ConnectionEnds {
  std::unique_ptr<Channel> main;
  std::unique_ptr<Channel> callback;
};

/**
 * @brief Two sockets that have found each other, and the events that come from them.
 * @details Alive as long as its owner or one of its handlers' calls holds it. Handlers may do
 *          anything from inside a call, so whatever follows a call looks at the state afresh.
 */
class Connection final : public std::enable_shared_from_this<Connection>,
                         private Channel::Listener {
public:
  /// README.md draws how these follow each other.
  enum class State {
    Open,     ///< Messages travel both ways.
    Draining, ///< The peer has gone; what it sent is still handed out.
    Ending,   ///< This side has ended it; the owner is told in a later turn of the loop.
    Closed    ///< The owner has been told, or has gone.
  };

  /// @param watchesMain A stub hears of what its main port receives, a proxy asks for it.
  Connection(std::weak_ptr<ConnectionOwner> owner, Peer peer, ConnectionEnds ends,
             bool watchesMain);
  ~Connection() = default;
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  /// Makes the ports and joins the loop. @return false when Ecore does not take the sockets.
  bool open();
  /// Says in a later turn what lies ready already; for after a greeting or a first receiver.
  void announceWaiting();
  /// Ends it without telling the owner, who is going.
  void close();

  const Peer &peer() const { return _peer; }
  rpc_port_h port(rpc_port_port_type_e type) const { return _lines[type].port; }

  // What the ports' functions come down to. Results are rpc_port_error_e.
  int send(rpc_port_port_type_e type, OutgoingMessage &message);
  int takeParcel(rpc_port_port_type_e type, Buffer &payload);
  int readRaw(rpc_port_port_type_e type, unsigned char *bytes, std::size_t size);
  /// Ends it; both sides are told by their loops.
  int disconnect();

private:
  static constexpr std::uint64_t kNone = ~std::uint64_t{0};

  /// One socket, and what is known of it here.
  struct Line {
    std::unique_ptr<Channel> channel;
    bool isWatched;
    rpc_port_h port = nullptr;
    /// The number of the message which a handler up the stack has at hand.
    std::uint64_t offered = kNone;
    Channel::Input input = Channel::Input::Drained;

    bool isOffering() const {
      return !channel->inbox().empty() && offered == channel->inbox().frontNumber();
    }
  };

  static void onTurn(void *data);
  void channelReady(Channel &channel, FdWatch::Events events) override;
  void takeTurn();
  void receive(Line &line);
  void handOut(ConnectionOwner &owner, Line &line, int &budget);
  bool offer(ConnectionOwner &owner, Line &line);
  bool isReceiving(const ConnectionOwner &owner) const;
  bool isOver(const ConnectionOwner &owner) const;
  void hasTaken(Line &line);
  void planNext(const ConnectionOwner &owner);
  void peerHasGone();
  void end();
  template <typename Condition>
  bool await(Line &line, Condition isThere);

  std::weak_ptr<ConnectionOwner> _owner;
  Peer _peer;
  State _state = State::Open;
  std::array<Line, 2> _lines;
  Job _turn;
};

} // namespace platform::rpc_port

#endif
