// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Client.h"

#include "assistant/client/Parcel.h"

#include <new>
#include <optional>
#include <utility>

namespace norix::assistant {
namespace {

constexpr const char *kPortName = "message";

// The message ids of the interface.
constexpr int kResult = 0;
constexpr int kCallback = 1;
constexpr int kSetCb = 2;
constexpr int kUnsetCb = 3;
constexpr int kSend = 4;

// What SetCB and UnsetCB answer.
constexpr int kDone = 0;
constexpr int kNotPermitted = -1;

void requireMessage(int expected, int actual, const char *name) {
  if (actual != expected) {
    throw Error(Failure::Malformed, "malformed message: id " + std::to_string(actual) + ", not "
                                        + std::to_string(expected) + " (" + name + ")");
  }
}

// A handler is called through a copy, so that it may destroy the client that holds it.
template <typename Handler, typename... Arguments>
void callHandler(Handler handler, Arguments &&...arguments) {
  if (handler) {
    handler(std::forward<Arguments>(arguments)...);
  }
}

} // namespace

Client::Client(Handlers handlers) : _handlers(std::move(handlers)) {
  if (rpc_port_proxy_create(&_proxy) != RPC_PORT_ERROR_NONE) {
    throw std::bad_alloc();
  }
  listen();
}

Client::~Client() {
  rpc_port_proxy_destroy(_proxy);
}

void Client::listen() {
  rpc_port_proxy_add_connected_event_cb(_proxy, onConnected, this);
  rpc_port_proxy_add_rejected_event_cb(_proxy, onRejected, this);
  rpc_port_proxy_add_disconnected_event_cb(_proxy, onDisconnected, this);
  rpc_port_proxy_add_received_event_cb(_proxy, onReceived, this);
}

void Client::connect(const std::string &appId) {
  _appId = appId;
  if (rpc_port_proxy_connect(_proxy, appId.c_str(), kPortName) != RPC_PORT_ERROR_NONE) {
    throw error(Failure::CannotConnect, "cannot connect: no running application listens");
  }
}

void Client::setCallback(const Delegate &delegate) {
  _delegate = delegate;
  Parcel().writeInt(kSetCb).write(delegate).send(mainPort());
  require(awaitResult("SetCB"));
}

void Client::unsetCallback() {
  Parcel().writeInt(kUnsetCb).send(mainPort());
  require(awaitResult("UnsetCB"));
}

void Client::send(const Request &request) {
  send(request.toBundle().get());
}

void Client::send(bundle *content) {
  Parcel().writeInt(kSend).write(content).send(mainPort());
}

rpc_port_h Client::mainPort() const {
  return port(RPC_PORT_PORT_MAIN);
}

rpc_port_h Client::port(rpc_port_port_type_e type) const {
  rpc_port_h found = nullptr;
  return rpc_port_proxy_get_port(_proxy, type, &found) == RPC_PORT_ERROR_NONE ? found : nullptr;
}

int Client::awaitResult(const char *method) {
  try {
    Parcel reply = Parcel::receive(mainPort());
    requireMessage(kResult, reply.readInt("message id"), "Result");
    return reply.readInt("result");
  } catch (const Error &failed) {
    throw error(failed.failure(), std::string(failed.what()) + ", in answer to " + method);
  }
}

void Client::require(int result) {
  if (result == kDone) {
    return;
  }
  if (result == kNotPermitted) {
    throw error(Failure::Refused, "refuses this sender: its allow list does not name it");
  }
  throw error(Failure::Malformed, "malformed message: unknown result " + std::to_string(result));
}

Answer Client::receiveAnswer() {
  Parcel message = Parcel::receive(port(RPC_PORT_PORT_CALLBACK));
  requireMessage(kCallback, message.readInt("message id"), "Callback");
  const Delegate delegate = message.readDelegate();
  if (delegate != _delegate) {
    throw Error(Failure::Malformed, "malformed message: delegate " + delegate.tag()
                                        + " is not the registered " + _delegate.tag());
  }

  std::string sender = message.readString("app id");
  return {delegate, std::move(sender), Response(message.readBundle("bundle"))};
}

Error Client::error(Failure failure, const std::string &what) const {
  return {failure, "'" + _appId + "': " + what};
}

void Client::end(const Error &error) {
  callHandler(_handlers.ended, error);
}

void Client::onConnected(const char * /*receiver*/, const char * /*portName*/, rpc_port_h /*port*/,
                         void *userData) {
  callHandler(static_cast<Client *>(userData)->_handlers.connected);
}

void Client::onRejected(const char * /*receiver*/, const char * /*portName*/, void *userData) {
  auto *client = static_cast<Client *>(userData);
  client->end(client->error(Failure::CannotConnect, "cannot connect: no running application "
                                                    "listens, or it turned the connection down"));
}

void Client::onDisconnected(const char * /*receiver*/, const char * /*portName*/, void *userData) {
  auto *client = static_cast<Client *>(userData);
  client->end(client->error(Failure::Disconnected, "the connection ended: the application went "
                                                   "away or closed it"));
}

void Client::onReceived(const char * /*receiver*/, const char * /*portName*/, void *userData) {
  auto *client = static_cast<Client *>(userData);
  std::optional<Answer> answer;
  try {
    answer = client->receiveAnswer();
  } catch (const Error &failed) {
    const Error named = client->error(failed.failure(), failed.what());
    if (failed.failure() == Failure::Malformed) {
      callHandler(client->_handlers.malformed, named);
    } else {
      client->end(named);
    }
    return;
  }
  callHandler(client->_handlers.answered, std::move(*answer));
}

} // namespace norix::assistant
