// SPDX-License-Identifier: Apache-2.0
#include "connection/Proxy.h"

#include "common/log.h"
#include "wire/Hello.h"

#include <algorithm>
#include <new>
#include <utility>

namespace platform::rpc_port {

namespace {

template <typename Object>
void removeFrom(std::vector<std::shared_ptr<Object>> &objects, const Object &object) {
  const auto isIt = [&object](const std::shared_ptr<Object> &one) { return one.get() == &object; };
  objects.erase(std::remove_if(objects.begin(), objects.end(), isIt), objects.end());
}

} // namespace

std::shared_ptr<Dialer> Proxy::makeDialer(const std::string &appId, const std::string &portName) {
  return std::make_shared<Dialer>(Callback<void(Dialer &)>::to<&Proxy::dialed>(*this),
                                  Peer{appId, makeInstance(), portName});
}

int Proxy::connect(const std::string &appId, const std::string &portName) {
  if (!EcoreUse::isReady()) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  const auto dialer = makeDialer(appId, portName);
  _dialers.push_back(dialer);
  dialer->start();
  return RPC_PORT_ERROR_NONE;
}

int Proxy::connectSync(const std::string &appId, const std::string &portName,
                       std::shared_ptr<Connection> &connection) {
  const auto dialer = makeDialer(appId, portName);
  const int error = dialer->wait();
  if (error != RPC_PORT_ERROR_NONE) {
    return error;
  }
  if (_isDestroyed) {
    return RPC_PORT_ERROR_IO_ERROR; // By a handler of a stub in this process.
  }
  connection = establish(*dialer);
  return connection != nullptr ? RPC_PORT_ERROR_NONE : RPC_PORT_ERROR_IO_ERROR;
}

void Proxy::destroy() {
  _isDestroyed = true;
  for (const auto &dialer : std::exchange(_dialers, {})) {
    dialer->cancel();
  }
  for (const auto &connection : std::exchange(_connections, {})) {
    connection->close();
  }
}

rpc_port_h Proxy::port(rpc_port_port_type_e type) const {
  return _connections.empty() ? nullptr : _connections.back()->port(type);
}

void Proxy::addConnected(rpc_port_proxy_connected_event_cb callback, void *userData) {
  _connected.add(callback, userData);
}

void Proxy::addDisconnected(rpc_port_proxy_disconnected_event_cb callback, void *userData) {
  _disconnected.add(callback, userData);
}

void Proxy::addRejected(rpc_port_proxy_rejected_event_cb callback, void *userData) {
  _rejected.add(callback, userData);
}

void Proxy::addReceived(rpc_port_proxy_received_event_cb callback, void *userData) {
  _received.add(callback, userData);
  for (const auto &connection : _connections) {
    connection->announceWaiting();
  }
}

template <typename Callback>
void Proxy::raise(const EventHandlers<Callback> &handlers, const Peer &peer) {
  handlers.each([this, &peer](Callback callback, void *userData) {
    callback(peer.application.c_str(), peer.portName.c_str(), userData);
    return !_isDestroyed;
  });
}

void Proxy::raiseConnected(const Connection &connection) {
  const Peer &peer = connection.peer();
  rpc_port_h port = connection.port(RPC_PORT_PORT_MAIN);
  _connected.each([&](rpc_port_proxy_connected_event_cb callback, void *userData) {
    callback(peer.application.c_str(), peer.portName.c_str(), port, userData);
    return !_isDestroyed;
  });
}

int Proxy::messageReady(Connection &connection, rpc_port_h /*port*/) {
  raise(_received, connection.peer());
  return 0;
}

void Proxy::connectionEnded(Connection &connection) {
  removeFrom(_connections, connection);
  raise(_disconnected, connection.peer());
}

void Proxy::dialed(Dialer &dialer) {
  const auto self = shared_from_this();
  const auto kept = dialer.shared_from_this();
  removeFrom(_dialers, dialer);
  std::shared_ptr<Connection> connection;
  if (dialer.state() == Dialer::State::Welcomed) {
    connection = establish(dialer);
  }
  if (connection != nullptr) {
    raiseConnected(*connection);
    return;
  }
  dialer.cancel();
  raise(_rejected, dialer.peer());
}

/// @return The connection, or nullptr without memory, or when Ecore does not take its sockets.
std::shared_ptr<Connection> Proxy::establish(Dialer &dialer) try {
  auto connection = std::make_shared<Connection>(
      ConnectionHandlers{weak_from_this(), Callback<bool()>::to<&Proxy::hasReceivers>(*this),
                         Callback<int(Connection &, rpc_port_h)>::to<&Proxy::messageReady>(*this),
                         Callback<void(Connection &)>::to<&Proxy::connectionEnded>(*this)},
      dialer.peer(), dialer.takeEnds(), false);
  _connections.push_back(connection);
  if (!connection->open()) {
    removeFrom(_connections, *connection);
    connection->close();
    return nullptr;
  }
  // The stub may have called back at once; that follows in a later turn of the loop.
  connection->announceWaiting();
  return connection;
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "a connection is given up: there is no memory for it");
  return nullptr;
}

} // namespace platform::rpc_port
