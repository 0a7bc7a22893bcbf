// SPDX-License-Identifier: Apache-2.0
//
// The stub side of <rpc-port.h>.
#include "fakes/Platform.h"

#include <rpc-port.h>

using fake::platform;
using fake::PlatformCall;
using fake::StubHandle;

namespace {

// The stub behind a handle that the library uses; null, and a misuse, when it is not alive.
fake::FakeStub *usedStub(const char *function, rpc_port_stub_h handle) {
  fake::FakeStub *stub = platform().ports.findStub(handle);
  if (stub == nullptr) {
    platform().misuses.push_back(std::string(function) + " with a stub that is not alive");
  }
  return stub;
}

template <typename Handler>
int add(const char *function, rpc_port_stub_h handle, Handler handler, void *userData,
        fake::FakeStub::Registered<Handler> fake::FakeStub::*event) {
  const PlatformCall call(function, StubHandle{handle});
  fake::FakeStub *stub = usedStub(function, handle);
  if (call.failure()) {
    return *call.failure();
  }
  if (stub == nullptr || handler == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  stub->*event = {handler, userData};
  return RPC_PORT_ERROR_NONE;
}

} // namespace

extern "C" {

int rpc_port_stub_create(rpc_port_stub_h *h, const char *port_name) {
  const PlatformCall call("rpc_port_stub_create", port_name);
  if (call.failure()) {
    return *call.failure();
  }
  *h = platform().ports.createStub(port_name);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_destroy(rpc_port_stub_h h) {
  const PlatformCall call("rpc_port_stub_destroy", StubHandle{h});
  if (usedStub("rpc_port_stub_destroy", h) == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  (void)platform().ports.destroyStub(h);
  return call.failure().value_or(RPC_PORT_ERROR_NONE);
}

int rpc_port_stub_listen(rpc_port_stub_h h) {
  const PlatformCall call("rpc_port_stub_listen", StubHandle{h});
  fake::FakeStub *stub = usedStub("rpc_port_stub_listen", h);
  if (call.failure()) {
    return *call.failure();
  }
  if (stub == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  stub->listening = true;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_connected_event_cb(rpc_port_stub_h h, rpc_port_stub_connected_event_cb cb,
                                         void *user_data) {
  return add("rpc_port_stub_add_connected_event_cb", h, cb, user_data, &fake::FakeStub::connected);
}

int rpc_port_stub_add_disconnected_event_cb(rpc_port_stub_h h,
                                            rpc_port_stub_disconnected_event_cb cb,
                                            void *user_data) {
  return add("rpc_port_stub_add_disconnected_event_cb", h, cb, user_data,
             &fake::FakeStub::disconnected);
}

int rpc_port_stub_add_received_event_cb(rpc_port_stub_h h, rpc_port_stub_received_event_cb cb,
                                        void *user_data) {
  return add("rpc_port_stub_add_received_event_cb", h, cb, user_data, &fake::FakeStub::received);
}

int rpc_port_stub_get_port(rpc_port_stub_h h, rpc_port_port_type_e type, const char *instance,
                           rpc_port_h *port) {
  const PlatformCall call("rpc_port_stub_get_port", StubHandle{h}, static_cast<int>(type),
                          instance);
  const fake::FakeStub *stub = usedStub("rpc_port_stub_get_port", h);
  if (call.failure()) {
    return *call.failure();
  }
  if (stub == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  *port = platform().ports.port(instance, type);
  return RPC_PORT_ERROR_NONE;
}
}
