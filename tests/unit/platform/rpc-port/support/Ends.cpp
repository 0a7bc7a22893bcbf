// SPDX-License-Identifier: Apache-2.0
#include "Ends.h"

#include <cstdlib>
#include <memory>

namespace rpc_test {

int sendText(rpc_port_h port, const std::string &text) {
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create(&parcel);
  rpc_port_parcel_write_string(parcel, text.c_str());
  const int result = rpc_port_parcel_send(parcel, port);
  rpc_port_parcel_destroy(parcel);
  return result;
}

std::string takeText(rpc_port_h port) {
  rpc_port_parcel_h parcel = nullptr;
  const int created = rpc_port_parcel_create_from_port(&parcel, port);
  if (created != RPC_PORT_ERROR_NONE) {
    return "error " + std::to_string(created);
  }
  char *text = nullptr;
  const int read = rpc_port_parcel_read_string(parcel, &text);
  rpc_port_parcel_destroy(parcel);
  const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
  return read == RPC_PORT_ERROR_NONE ? text : "error " + std::to_string(read);
}

StubEnd::StubEnd(const char *port) {
  onReceived = [this](rpc_port_h from) {
    texts.push_back(takeText(from));
    return 0;
  };
  rpc_port_stub_create(&handle, port);
  rpc_port_stub_add_connected_event_cb(handle, &StubEnd::noteConnected, this);
  rpc_port_stub_add_disconnected_event_cb(handle, &StubEnd::noteDisconnected, this);
  rpc_port_stub_add_received_event_cb(handle, &StubEnd::noteReceived, this);
}

StubEnd::~StubEnd() {
  destroy();
}

void StubEnd::destroy() {
  if (handle) {
    rpc_port_stub_destroy(handle);
    handle = nullptr;
  }
}

rpc_port_h StubEnd::port(rpc_port_port_type_e type, std::size_t connection) const {
  rpc_port_h found = nullptr;
  if (connection < instances.size()) {
    rpc_port_stub_get_port(handle, type, instances[connection].c_str(), &found);
  }
  return found;
}

void StubEnd::noteConnected(const char *sender, const char *instance, void *data) {
  auto *self = static_cast<StubEnd *>(data);
  self->senders.emplace_back(sender);
  self->instances.emplace_back(instance);
  self->onConnected();
}

void StubEnd::noteDisconnected(const char * /*sender*/, const char *instance, void *data) {
  auto *self = static_cast<StubEnd *>(data);
  self->ended.emplace_back(instance);
  self->onDisconnected();
}

int StubEnd::noteReceived(const char * /*sender*/, const char * /*instance*/, rpc_port_h port,
                          void *data) {
  return static_cast<StubEnd *>(data)->onReceived(port);
}

ProxyEnd::ProxyEnd() {
  onReceived = [this] { texts.push_back(takeText(port(RPC_PORT_PORT_CALLBACK))); };
  rpc_port_proxy_create(&handle);
  rpc_port_proxy_add_connected_event_cb(handle, &ProxyEnd::noteConnected, this);
  rpc_port_proxy_add_disconnected_event_cb(handle, &ProxyEnd::noteDisconnected, this);
  rpc_port_proxy_add_rejected_event_cb(handle, &ProxyEnd::noteRejected, this);
  rpc_port_proxy_add_received_event_cb(handle, &ProxyEnd::noteReceived, this);
}

ProxyEnd::~ProxyEnd() {
  destroy();
}

void ProxyEnd::destroy() {
  if (handle) {
    rpc_port_proxy_destroy(handle);
    handle = nullptr;
  }
}

rpc_port_h ProxyEnd::port(rpc_port_port_type_e type) const {
  rpc_port_h found = nullptr;
  rpc_port_proxy_get_port(handle, type, &found);
  return found;
}

void ProxyEnd::noteConnected(const char * /*receiver*/, const char * /*name*/, rpc_port_h port,
                             void *data) {
  auto *self = static_cast<ProxyEnd *>(data);
  self->mainPorts.push_back(port);
  self->onConnected();
}

void ProxyEnd::noteDisconnected(const char * /*receiver*/, const char * /*name*/, void *data) {
  auto *self = static_cast<ProxyEnd *>(data);
  ++self->endings;
  self->onDisconnected();
}

void ProxyEnd::noteRejected(const char * /*receiver*/, const char * /*name*/, void *data) {
  auto *self = static_cast<ProxyEnd *>(data);
  ++self->rejections;
  self->onRejected();
}

void ProxyEnd::noteReceived(const char * /*receiver*/, const char * /*name*/, void *data) {
  static_cast<ProxyEnd *>(data)->onReceived();
}

void ConnectedEnds::SetUp() {
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  ASSERT_EQ(proxy.connect(), RPC_PORT_ERROR_NONE);
  ASSERT_TRUE(runUntil([this] { return !proxy.mainPorts.empty() && !stub.instances.empty(); }));
}

} // namespace rpc_test
