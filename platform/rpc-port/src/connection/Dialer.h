// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_DIALER_H
#define PLATFORM_RPC_PORT_CONNECTION_DIALER_H

#include "connection/Connection.h"
#include "loop/Job.h"
#include "loop/Timer.h"
#include "socket/PortSocket.h"

#include <array>
#include <memory>

namespace platform::rpc_port {

/// Establishes one connection for a proxy: two sockets, a hello on each, and the stub's welcomes.
class Dialer final : public std::enable_shared_from_this<Dialer> {
public:
  enum class State {
    Connecting, ///< Backlog full or application starting; the next attempt follows in a moment.
    Waiting,    ///< Both hellos are sent.
    Welcomed,   ///< takeEnds() has the connection's sockets.
    Failed      ///< error() says why.
  };

  /// Called by the loop, with a dialer that is Welcomed or Failed. It may destroy the dialer.
  using Done = Callback<void(Dialer &dialer)>;

  Dialer(Done done, Peer peer);

  /// Begins; the outcome comes from the loop.
  void start();
  /// Waits for the outcome without running the loop. @return An rpc_port_error_e.
  int wait();
  /// Closes the sockets; no outcome follows.
  void cancel();

  State state() const { return _state; }
  int error() const { return _error; }
  const Peer &peer() const { return _peer; }
  ConnectionEnds takeEnds();

private:
  /// One of the two sockets.
  struct Line {
    std::unique_ptr<Channel> channel;
    bool isWelcomed = false;
  };

  void onRetry();
  void onTimeout();
  void onOutcome();
  void channelReady(Channel &channel, FdWatch::Events events);
  void attempt();
  void openLines();
  bool mayListenSoon(const ConnectedSocket &socket);
  bool sayHello(rpc_port_port_type_e type, Descriptor socket);
  void watchForWelcome();
  void receive(Line &line);
  void waitForWelcome(double seconds);
  void fail(int error);
  bool isDone() const { return _state == State::Welcomed || _state == State::Failed; }

  Done _done;
  Peer _peer;
  std::string _sender;
  State _state = State::Connecting;
  bool _hasLaunched = false;
  int _error;
  std::array<Line, 2> _lines;
  Timer _retry;
  Timer _timeout;
  Job _outcome;
};

} // namespace platform::rpc_port

#endif
