// SPDX-License-Identifier: Apache-2.0
#include "connection/Stub.h"

#include "common/Names.h"
#include "common/Printable.h"
#include "common/log.h"

#include <new>
#include <utility>

namespace platform::rpc_port {

namespace {

bool welcome(Channel &channel) {
  const Buffer payload = encodeWelcome();
  OutgoingMessage message(FrameKind::Welcome);
  message.add(payload.data(), payload.size());
  return channel.send(message) == SendOutcome::Taken;
}

} // namespace

bool Stub::listen() try {
  const std::string appId = ownAppId();
  if (const std::string fault = findFault(appId); !fault.empty()) {
    dlog_print(DLOG_ERROR, kLogTag, "port %s cannot be listened on: %s",
               Printable(_portName).text(), fault.c_str());
    return false;
  }
  std::unique_ptr<ListeningSocket> socket = ListeningSocket::open(appId, _portName);
  if (socket == nullptr) {
    return false;
  }
  auto lobby = std::make_shared<Lobby>(
      Lobby::Handlers{Callback<bool(const std::string &)>::to<&Stub::isInstanceInUse>(*this),
                      Callback<void(const Hello &, ConnectionEnds)>::to<&Stub::admit>(*this)});
  auto acceptor = std::make_unique<Acceptor>(std::move(socket), *lobby);
  if (!acceptor->start()) {
    return false;
  }
  _lobby = std::move(lobby);
  _acceptor = std::move(acceptor);
  return true;
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "a port cannot be listened on: there is no memory for it");
  return false;
}

/// @return Why this process cannot listen as `appId`, or an empty text.
std::string Stub::findFault(const std::string &appId) const {
  if (_acceptor != nullptr) {
    return "this stub listens already";
  }
  if (!EcoreUse::isReady()) {
    return "there is no main loop; a message before this one says why";
  }
  if (appId.empty()) {
    return "this process has no app id; set AUL_APPID";
  }
  if (!isAppId(appId)) {
    return std::string("the app id \"") + Printable(appId).text()
           + "\" is no file name; set AUL_APPID";
  }
  return {};
}

void Stub::destroy() {
  _isDestroyed = true;
  _acceptor.reset();
  if (_lobby != nullptr) {
    _lobby->close();
  }
  for (const auto &entry : std::exchange(_connections, {})) {
    entry.second->close();
  }
}

rpc_port_h Stub::port(rpc_port_port_type_e type, std::string_view instance) const {
  const auto found = _connections.find(instance);
  return found == _connections.end() ? nullptr : found->second->port(type);
}

void Stub::addConnected(rpc_port_stub_connected_event_cb callback, void *userData) {
  _connected.add(callback, userData);
}

void Stub::addDisconnected(rpc_port_stub_disconnected_event_cb callback, void *userData) {
  _disconnected.add(callback, userData);
}

void Stub::addReceived(rpc_port_stub_received_event_cb callback, void *userData) {
  _received.add(callback, userData);
  for (const auto &entry : _connections) {
    entry.second->announceWaiting();
  }
}

template <typename Callback>
void Stub::raise(const EventHandlers<Callback> &handlers, const Connection &connection) {
  const Peer &peer = connection.peer();
  handlers.each([this, &peer](Callback callback, void *userData) {
    callback(peer.application.c_str(), peer.instance.c_str(), userData);
    return !_isDestroyed;
  });
}

int Stub::messageReady(Connection &connection, rpc_port_h port) {
  int result = 0;
  const Peer &peer = connection.peer();
  _received.each([&](rpc_port_stub_received_event_cb callback, void *userData) {
    result = callback(peer.application.c_str(), peer.instance.c_str(), port, userData);
    return result == 0 && !_isDestroyed;
  });
  return result;
}

void Stub::connectionEnded(Connection &connection) {
  _connections.erase(connection.peer().instance);
  raise(_disconnected, connection);
}

bool Stub::isInstanceInUse(const std::string &instance) const {
  return _connections.find(instance) != _connections.end();
}

void Stub::admit(const Hello &hello, ConnectionEnds ends) {
  const auto self = shared_from_this();
  const auto connection = establish(hello, std::move(ends));
  if (connection == nullptr) {
    return;
  }
  // Requests that came before the second socket follow in a later turn of the loop.
  connection->announceWaiting();
  raise(_connected, *connection);
}

/// @return The connection, or nullptr; the peer then sees its sockets closed.
std::shared_ptr<Connection> Stub::establish(const Hello &hello, ConnectionEnds ends) try {
  if (!welcome(*ends.main) || !welcome(*ends.callback)) {
    return nullptr;
  }
  auto connection = std::make_shared<Connection>(
      ConnectionHandlers{weak_from_this(), Callback<bool()>::to<&Stub::hasReceivers>(*this),
                         Callback<int(Connection &, rpc_port_h)>::to<&Stub::messageReady>(*this),
                         Callback<void(Connection &)>::to<&Stub::connectionEnded>(*this)},
      Peer{hello.sender, hello.instance, _portName}, std::move(ends), true);
  _connections.emplace(hello.instance, connection);
  if (connection->open()) {
    return connection;
  }
  _connections.erase(hello.instance);
  connection->close();
  return nullptr;
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "a connection is refused: there is no memory for it");
  return nullptr;
}

} // namespace platform::rpc_port
