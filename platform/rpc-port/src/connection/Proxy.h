// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_PROXY_H
#define PLATFORM_RPC_PORT_CONNECTION_PROXY_H

#include "connection/Connection.h"
#include "connection/Dialer.h"
#include "connection/EventHandlers.h"
#include "loop/EcoreUse.h"

#include <memory>
#include <rpc-port.h>
#include <string>
#include <vector>

namespace platform::rpc_port {

/// The object behind an rpc_port_proxy_h: owns any number of connections, to any ports.
class Proxy final : public std::enable_shared_from_this<Proxy> {
public:
  /// The outcome comes as an event. @return An rpc_port_error_e.
  int connect(const std::string &appId, const std::string &portName);
  /// Connects now. The caller raises the event of what it gets. @return An rpc_port_error_e.
  int connectSync(const std::string &appId, const std::string &portName,
                  std::shared_ptr<Connection> &connection);
  void raiseConnected(const Connection &connection);
  /// Ends the connections and the attempts to connect; no event follows. A handler may call it.
  void destroy();

  /// @return The newest connection's port, or nullptr when there is none.
  rpc_port_h port(rpc_port_port_type_e type) const;

  void addConnected(rpc_port_proxy_connected_event_cb callback, void *userData);
  void addDisconnected(rpc_port_proxy_disconnected_event_cb callback, void *userData);
  void addRejected(rpc_port_proxy_rejected_event_cb callback, void *userData);
  void addReceived(rpc_port_proxy_received_event_cb callback, void *userData);

private:
  bool hasReceivers() const { return !_received.empty(); }
  int messageReady(Connection &connection, rpc_port_h port);
  void connectionEnded(Connection &connection);
  std::shared_ptr<Dialer> makeDialer(const std::string &appId, const std::string &portName);
  void dialed(Dialer &dialer);
  std::shared_ptr<Connection> establish(Dialer &dialer);
  template <typename Callback>
  void raise(const EventHandlers<Callback> &handlers, const Peer &peer);

  EcoreUse _ecore;
  bool _isDestroyed = false;
  std::vector<std::shared_ptr<Dialer>> _dialers;
  std::vector<std::shared_ptr<Connection>> _connections; // In the order of connecting.
  EventHandlers<rpc_port_proxy_connected_event_cb> _connected;
  EventHandlers<rpc_port_proxy_disconnected_event_cb> _disconnected;
  EventHandlers<rpc_port_proxy_rejected_event_cb> _rejected;
  EventHandlers<rpc_port_proxy_received_event_cb> _received;
};

} // namespace platform::rpc_port

#endif
