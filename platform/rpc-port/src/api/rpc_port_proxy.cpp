// SPDX-License-Identifier: Apache-2.0
#include "api/arguments.h"
#include "common/Names.h"
#include "connection/Proxy.h"
#include "registry/HandleTable.h"

namespace rpc = platform::rpc_port;

namespace {

using ProxyTable = rpc::HandleTable<std::shared_ptr<rpc::Proxy>, rpc::HandleKind::Proxy>;

ProxyTable &proxies() {
  static auto *const table = new ProxyTable;
  return *table;
}

/// @return The proxy, held for as long as the call lasts, or nullptr.
std::shared_ptr<rpc::Proxy> find(rpc_port_proxy_h h) {
  const auto *proxy = proxies().find(h);
  return proxy != nullptr ? *proxy : nullptr;
}

bool isAddress(const char *appid, const char *port) {
  return appid != nullptr && port != nullptr && rpc::isAppId(appid) && rpc::isPortName(port);
}

template <typename Callback>
int addHandler(rpc_port_proxy_h h, Callback callback, void *userData,
               void (rpc::Proxy::*add)(Callback, void *)) {
  const auto proxy = find(h);
  if (proxy == nullptr || callback == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    ((*proxy).*add)(callback, userData);
    return RPC_PORT_ERROR_NONE;
  });
}

} // namespace

int rpc_port_proxy_create(rpc_port_proxy_h *h) {
  if (h == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    *h = proxies().add(std::make_shared<rpc::Proxy>());
    return RPC_PORT_ERROR_NONE;
  });
}

int rpc_port_proxy_destroy(rpc_port_proxy_h h) {
  const auto proxy = proxies().remove(h);
  if (proxy == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  proxy->destroy();
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_proxy_connect(rpc_port_proxy_h h, const char *appid, const char *port) {
  const auto proxy = find(h);
  if (proxy == nullptr || !isAddress(appid, port)) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] { return proxy->connect(appid, port); });
}

int rpc_port_proxy_connect_sync(rpc_port_proxy_h h, const char *appid, const char *port) {
  const auto proxy = find(h);
  if (proxy == nullptr || !isAddress(appid, port)) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  std::shared_ptr<rpc::Connection> connection;
  const int result = rpc::guarded([&] { return proxy->connectSync(appid, port, connection); });
  if (connection != nullptr) {
    proxy->raiseConnected(*connection); // What the handlers throw is not ours to catch.
  }
  return result;
}

int rpc_port_proxy_add_connected_event_cb(rpc_port_proxy_h h, rpc_port_proxy_connected_event_cb cb,
                                          void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Proxy::addConnected);
}

int rpc_port_proxy_add_disconnected_event_cb(rpc_port_proxy_h h,
                                             rpc_port_proxy_disconnected_event_cb cb,
                                             void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Proxy::addDisconnected);
}

int rpc_port_proxy_add_rejected_event_cb(rpc_port_proxy_h h, rpc_port_proxy_rejected_event_cb cb,
                                         void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Proxy::addRejected);
}

int rpc_port_proxy_add_received_event_cb(rpc_port_proxy_h h, rpc_port_proxy_received_event_cb cb,
                                         void *user_data) {
  return addHandler(h, cb, user_data, &rpc::Proxy::addReceived);
}

int rpc_port_proxy_get_port(rpc_port_proxy_h h, rpc_port_port_type_e type, rpc_port_h *port) {
  const auto proxy = find(h);
  if (proxy == nullptr || port == nullptr || !rpc::isPortType(type)) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  rpc_port_h found = proxy->port(type);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  *port = found;
  return RPC_PORT_ERROR_NONE;
}
