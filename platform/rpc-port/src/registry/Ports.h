// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_REGISTRY_PORTS_H
#define PLATFORM_RPC_PORT_REGISTRY_PORTS_H

#include "registry/HandleTable.h"

#include <memory>
#include <rpc-port.h>

namespace platform::rpc_port {

class Connection;

/// The object behind an rpc_port_h: one port of a live connection.
struct Port {
  std::shared_ptr<Connection> connection;
  rpc_port_port_type_e type = RPC_PORT_PORT_MAIN;
};

using PortTable = HandleTable<Port, HandleKind::Port>;

/// The ports of all connections of the process.
PortTable &ports();

} // namespace platform::rpc_port

#endif
