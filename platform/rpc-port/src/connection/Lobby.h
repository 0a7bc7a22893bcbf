// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_LOBBY_H
#define PLATFORM_RPC_PORT_CONNECTION_LOBBY_H

#include "connection/Connection.h"
#include "loop/Timer.h"
#include "wire/Hello.h"

#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform::rpc_port {

/// The accepted sockets of a stub, until both sockets of a connection have said hello. A guest is
/// refused when it is of another user, sends no proper hello, names an instance that is taken, or
/// its second socket does not come in time: its socket is closed, and the log says why.
class Lobby final : public std::enable_shared_from_this<Lobby> {
public:
  /// Callbacks of the stub.
  struct Handlers {
    Callback<bool(const std::string &instance)> isInstanceInUse;
    /// Both sockets of a connection are in. May destroy the lobby.
    Callback<void(const Hello &hello, ConnectionEnds ends)> admit;
  };

  explicit Lobby(Handlers handlers, double sweepSeconds = kSweepSeconds);

  void add(Descriptor socket);
  /// Receives from every guest without a hello, as the loop would.
  void receiveHellos();
  /// Closes all guests' sockets.
  void close();
  std::size_t size() const { return _guests.size(); }

private:
  /// One accepted socket.
  struct Guest {
    std::unique_ptr<Channel> channel;
    pid_t process;
    std::optional<Hello> hello;
    int sweeps = 0;
  };
  using Guests = std::vector<Guest>;

  void addGuest(Descriptor socket, pid_t process);
  Guests::iterator find(const Channel &channel);
  void channelReady(Channel &channel, FdWatch::Events events);
  const char *takeHello(Guest &guest);
  void findTwin(Guests::iterator guest);
  const char *findFault(const Guest &guest, const Hello &hello) const;
  void remove(Guests::iterator guest);
  void refuse(Guests::iterator guest, const char *reason);
  void sweep();

  Handlers _handlers;
  double _sweepSeconds;
  Guests _guests; // In the order of arrival.
  Timer _sweep;
};

} // namespace platform::rpc_port

#endif
