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

/// Makes one connection on a proxy's behalf: two sockets, a hello on each, and the stub's welcome.
class Dialer final : public std::enable_shared_from_this<Dialer>, private Channel::Listener {
public:
  enum class State {
    Connecting, ///< The stub's backlog is full; tried again in a moment.
    Waiting,    ///< Both hellos are sent.
    Welcomed,   ///< Done: takeEnds() has the connection's sockets.
    Failed      ///< error() says why.
  };

  /// The proxy.
  class Owner {
  public:
    /// Welcomed or Failed, from the loop. May destroy the dialer.
    virtual void dialed(Dialer &dialer) = 0;

  protected:
    ~Owner() = default;
  };

  Dialer(Owner &owner, Peer peer);

  /// Begins; the owner is told the outcome by the loop.
  void start();
  /// Waits for the outcome, without the loop. @return An rpc_port_error_e.
  int wait();
  /// The owner is not told any more.
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

  static void onRetry(void *data);
  static void onTimeout(void *data);
  static void onOutcome(void *data);
  void channelReady(Channel &channel, FdWatch::Events events) override;
  void attempt();
  bool sayHello(rpc_port_port_type_e type, Descriptor socket);
  void watchForWelcome();
  void receive(Line &line);
  void waitForWelcome(double seconds);
  void fail(int error);
  bool isDone() const { return _state == State::Welcomed || _state == State::Failed; }

  Owner &_owner;
  Peer _peer;
  std::string _sender;
  State _state = State::Connecting;
  int _error;
  std::array<Line, 2> _lines;
  Timer _retry;
  Timer _timeout;
  Job _outcome;
};

} // namespace platform::rpc_port

#endif
