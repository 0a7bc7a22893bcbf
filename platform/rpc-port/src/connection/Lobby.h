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

/**
 * @brief Where accepted sockets wait until both of a connection are in.
 * @details A guest that is of another user, says no proper hello, names an instance that is taken
 *          or stays without its twin is sent away: its socket is closed, and the log says why.
 */
class Lobby final : public std::enable_shared_from_this<Lobby>, private Channel::Listener {
public:
  /// The stub.
  class Owner {
  public:
    virtual bool isInstanceInUse(const std::string &instance) const = 0;
    /// Both sockets of a connection are in. May destroy the lobby.
    virtual void admit(const Hello &hello, ConnectionEnds ends) = 0;

  protected:
    ~Owner() = default;
  };

  explicit Lobby(Owner &owner, double sweepSeconds = kSweepSeconds);

  void add(Descriptor socket);
  /// Looks at every guest without a hello, as the loop would.
  void receiveHellos();
  /// Sends everybody away.
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

  static void onSweep(void *data);
  Guests::iterator find(const Channel &channel);
  void channelReady(Channel &channel, FdWatch::Events events) override;
  void greet(Guests::iterator guest);
  void findTwin(Guests::iterator guest);
  const char *findFault(const Guest &guest, const Hello &hello) const;
  void remove(Guests::iterator guest);
  void sendAway(Guests::iterator guest, const char *reason);
  void sweep();

  Owner &_owner;
  double _sweepSeconds;
  Guests _guests; // In the order of arrival.
  Timer _sweep;
};

} // namespace platform::rpc_port

#endif
