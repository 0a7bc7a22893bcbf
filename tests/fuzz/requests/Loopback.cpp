// SPDX-License-Identifier: Apache-2.0
#include "requests/Loopback.h"

#include "support/check.h"

#include <utility>

namespace fuzz {

namespace {

// What a parcel without a tag has before its fields.
constexpr std::size_t kHeaderSize = 24;

Loopback &loopback() {
  static auto *const one = new Loopback;
  return *one;
}

} // namespace

Loopback &Loopback::instance() {
  return loopback();
}

void resetLoopback() {
  loopback() = Loopback();
}

void Loopback::connect(const std::string &sender, const std::string &instance) {
  if (!_isListening || isConnected(instance)) {
    return;
  }
  _connections[instance] = {sender, makePort(instance, RPC_PORT_PORT_MAIN),
                            makePort(instance, RPC_PORT_PORT_CALLBACK)};
  _connected.callback(sender.c_str(), instance.c_str(), _connected.data);
}

void Loopback::disconnect(const std::string &instance) {
  const auto found = _connections.find(instance);
  if (found == _connections.end()) {
    return;
  }
  const std::string sender = found->second.sender;
  _connections.erase(found); // The ports are dead when the event comes.
  _disconnected.callback(sender.c_str(), instance.c_str(), _disconnected.data);
}

void Loopback::deliver(const std::string &instance, std::string_view fields) {
  const auto found = _connections.find(instance);
  if (found == _connections.end()) {
    return;
  }
  const std::string sender = found->second.sender;
  Port *const port = found->second.main;
  port->arrived.push_back(std::string(kHeaderSize, '\0').append(fields));
  if (_received.callback(sender.c_str(), instance.c_str(), port, _received.data) != 0) {
    disconnect(instance);
  }
}

std::vector<Loopback::Sent> Loopback::takeSent() {
  return std::exchange(_sent, {});
}

int Loopback::create(rpc_port_stub_h *stub) {
  check(!_isCreated, "the library has one stub at a time");
  _isCreated = true;
  *stub = this;
  return RPC_PORT_ERROR_NONE;
}

int Loopback::destroy(rpc_port_stub_h stub) {
  check(_isCreated && stub == this, "a stub is destroyed once");
  _isCreated = false;
  _isListening = false;
  _connections.clear();
  return RPC_PORT_ERROR_NONE;
}

int Loopback::listen(rpc_port_stub_h stub) {
  check(_isCreated && stub == this && !_isListening, "a stub listens once");
  _isListening = true;
  return RPC_PORT_ERROR_NONE;
}

void Loopback::onConnected(rpc_port_stub_connected_event_cb callback, void *data) {
  _connected = {callback, data};
}

void Loopback::onDisconnected(rpc_port_stub_disconnected_event_cb callback, void *data) {
  _disconnected = {callback, data};
}

void Loopback::onReceived(rpc_port_stub_received_event_cb callback, void *data) {
  _received = {callback, data};
}

int Loopback::findPort(const std::string &instance, rpc_port_port_type_e type, rpc_port_h *port) {
  const auto found = _connections.find(instance);
  if (found == _connections.end()) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  *port = type == RPC_PORT_PORT_MAIN ? found->second.main : found->second.callback;
  return RPC_PORT_ERROR_NONE;
}

int Loopback::receive(rpc_port_h port, rpc_port_parcel_h *parcel) {
  Port *const found = alive(port);
  if (found == nullptr || found->arrived.empty()) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  const std::string raw = std::move(found->arrived.front());
  found->arrived.pop_front();
  return rpc_port_parcel_create_from_raw(parcel, raw.data(), static_cast<unsigned int>(raw.size()));
}

int Loopback::send(rpc_port_h port, rpc_port_parcel_h parcel) {
  const Port *const found = alive(port);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  void *raw = nullptr;
  unsigned int size = 0;
  check(rpc_port_parcel_get_raw(parcel, &raw, &size) == 0, "what the library sends is a parcel");
  _sent.push_back({found->instance, found->type, {static_cast<const char *>(raw), size}});
  return RPC_PORT_ERROR_NONE;
}

Loopback::Port *Loopback::makePort(const std::string &instance, rpc_port_port_type_e type) {
  _ports.push_back(std::make_unique<Port>(Port{instance, type, {}}));
  return _ports.back().get();
}

Loopback::Port *Loopback::alive(rpc_port_h port) const {
  for (const auto &entry : _connections) {
    const Connection &connection = entry.second;
    if (port == connection.main || port == connection.callback) {
      return static_cast<Port *>(port);
    }
  }
  return nullptr;
}

} // namespace fuzz

using fuzz::Loopback;

// In the program itself: these come before librpc-port's for everybody in the process.
extern "C" {

int rpc_port_stub_create(rpc_port_stub_h *h, const char * /*port_name*/) {
  return Loopback::instance().create(h);
}

int rpc_port_stub_destroy(rpc_port_stub_h h) {
  return Loopback::instance().destroy(h);
}

int rpc_port_stub_listen(rpc_port_stub_h h) {
  return Loopback::instance().listen(h);
}

int rpc_port_stub_add_connected_event_cb(rpc_port_stub_h /*h*/, rpc_port_stub_connected_event_cb cb,
                                         void *user_data) {
  Loopback::instance().onConnected(cb, user_data);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_disconnected_event_cb(rpc_port_stub_h /*h*/,
                                            rpc_port_stub_disconnected_event_cb cb,
                                            void *user_data) {
  Loopback::instance().onDisconnected(cb, user_data);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_received_event_cb(rpc_port_stub_h /*h*/, rpc_port_stub_received_event_cb cb,
                                        void *user_data) {
  Loopback::instance().onReceived(cb, user_data);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_get_port(rpc_port_stub_h /*h*/, rpc_port_port_type_e type, const char *instance,
                           rpc_port_h *port) {
  return Loopback::instance().findPort(instance, type, port);
}

int rpc_port_parcel_create_from_port(rpc_port_parcel_h *h, rpc_port_h port) {
  return Loopback::instance().receive(port, h);
}

int rpc_port_parcel_send(rpc_port_parcel_h h, rpc_port_h port) {
  return Loopback::instance().send(port, h);
}
}
