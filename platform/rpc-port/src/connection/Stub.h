// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_STUB_H
#define PLATFORM_RPC_PORT_CONNECTION_STUB_H

#include "connection/Acceptor.h"
#include "connection/Connection.h"
#include "connection/EventHandlers.h"
#include "connection/Lobby.h"
#include "loop/EcoreUse.h"

#include <functional>
#include <map>
#include <memory>
#include <rpc-port.h>
#include <string>
#include <string_view>

namespace platform::rpc_port {

/// The object behind an rpc_port_stub_h: listens, and owns the connections that were accepted.
class Stub final : public std::enable_shared_from_this<Stub> {
public:
  explicit Stub(std::string portName) : _portName(std::move(portName)) {}

  /// @return Success; the log says what went wrong.
  bool listen();
  /// Stops listening and ends the connections; no event follows. A handler may call it.
  void destroy();

  /// @return The port, or nullptr when there is no such connection.
  rpc_port_h port(rpc_port_port_type_e type, std::string_view instance) const;

  void addConnected(rpc_port_stub_connected_event_cb callback, void *userData);
  void addDisconnected(rpc_port_stub_disconnected_event_cb callback, void *userData);
  void addReceived(rpc_port_stub_received_event_cb callback, void *userData);

private:
  std::string findFault(const std::string &appId) const;
  bool hasReceivers() const { return !_received.empty(); }
  int messageReady(Connection &connection, rpc_port_h port);
  void connectionEnded(Connection &connection);
  bool isInstanceInUse(const std::string &instance) const;
  void admit(const Hello &hello, ConnectionEnds ends);
  std::shared_ptr<Connection> establish(const Hello &hello, ConnectionEnds ends);
  template <typename Callback>
  void raise(const EventHandlers<Callback> &handlers, const Connection &connection);

  EcoreUse _ecore;
  std::string _portName;
  bool _isDestroyed = false;
  std::shared_ptr<Lobby> _lobby;
  std::unique_ptr<Acceptor> _acceptor;
  std::map<std::string, std::shared_ptr<Connection>, std::less<>> _connections;
  EventHandlers<rpc_port_stub_connected_event_cb> _connected;
  EventHandlers<rpc_port_stub_disconnected_event_cb> _disconnected;
  EventHandlers<rpc_port_stub_received_event_cb> _received;
};

} // namespace platform::rpc_port

#endif
