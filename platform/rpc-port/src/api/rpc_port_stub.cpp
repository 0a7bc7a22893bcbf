// SPDX-License-Identifier: Apache-2.0
#include "api/arguments.h"
#include "common/Names.h"
#include "connection/Stub.h"
#include "registry/HandleTable.h"

namespace rpc = platform::rpc_port;

namespace {

using StubTable = rpc::HandleTable<std::shared_ptr<rpc::Stub>, rpc::HandleKind::Stub>;

StubTable &stubs() {
  static auto *const table = new StubTable;
  return *table;
}

/// @return The stub, held for as long as the call lasts, or nullptr.
std::shared_ptr<rpc::Stub> find(rpc_port_stub_h h) {
  const auto *stub = stubs().find(h);
  return stub != nullptr ? *stub : nullptr;
}

template <typename Callback>
int addHandler(rpc_port_stub_h h, Callback callback, void *userData,
               void (rpc::Stub::*add)(Callback, void *)) {
  const auto stub = find(h);
  if (stub == nullptr || callback == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    ((*stub).*add)(callback, userData);
    return RPC_PORT_ERROR_NONE;
  });
}

} // namespace

int rpc_port_stub_create(rpc_port_stub_h *h, const char *port_name) {
  if (h == nullptr || port_name == nullptr || !rpc::isPortName(port_name)) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    *h = stubs().add(std::make_shared<rpc::Stub>(port_name));
    return RPC_PORT_ERROR_NONE;
  });
}

int rpc_port_stub_destroy(rpc_port_stub_h h) {
  const auto stub = stubs().remove(h);
  if (stub == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  stub->destroy();
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_listen(rpc_port_stub_h h) {
  const auto stub = find(h);
  if (stub == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  // One code for every failure: the stubs that applications are built with take any other code than
  // this one and INVALID_PARAMETER for success.
  return stub->listen() ? RPC_PORT_ERROR_NONE : RPC_PORT_ERROR_IO_ERROR;
}

int rpc_port_stub_add_connected_event_cb(rpc_port_stub_h h, rpc_port_stub_connected_event_cb cb,
                                         void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Stub::addConnected);
}

int rpc_port_stub_add_disconnected_event_cb(rpc_port_stub_h h,
                                            rpc_port_stub_disconnected_event_cb cb,
                                            void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Stub::addDisconnected);
}

int rpc_port_stub_add_received_event_cb(rpc_port_stub_h h, rpc_port_stub_received_event_cb cb,
                                        void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Stub::addReceived);
}

// One user's processes have no privileges to tell them apart by: accepted, without effect.
int rpc_port_stub_add_privilege(rpc_port_stub_h h, const char *privilege) {
  return find(h) != nullptr && privilege != nullptr ? RPC_PORT_ERROR_NONE
                                                    : RPC_PORT_ERROR_INVALID_PARAMETER;
}

int rpc_port_stub_set_trusted(rpc_port_stub_h h, const bool /*trusted*/) {
  return find(h) != nullptr ? RPC_PORT_ERROR_NONE : RPC_PORT_ERROR_INVALID_PARAMETER;
}

int rpc_port_stub_get_port(rpc_port_stub_h h, rpc_port_port_type_e type, const char *instance,
                           rpc_port_h *port) {
  const auto stub = find(h);
  if (stub == nullptr || instance == nullptr || port == nullptr || !rpc::isPortType(type)) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  rpc_port_h found = stub->port(type, instance);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  *port = found;
  return RPC_PORT_ERROR_NONE;
}
