// SPDX-License-Identifier: Apache-2.0
#include <rpc-port.h>

#include "api/arguments.h"
#include "common/bounds.h"
#include "connection/Connection.h"
#include "registry/Ports.h"

namespace rpc = platform::rpc_port;

namespace {

/// Private sharing has no meaning on a desktop: the arguments are checked, nothing is done.
int acceptFor(rpc_port_h port, bool hasArguments) {
  if (port == nullptr || !hasArguments) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::ports().find(port) ? RPC_PORT_ERROR_NONE : RPC_PORT_ERROR_IO_ERROR;
}

} // namespace

int rpc_port_read(rpc_port_h h, void *buf, unsigned int size) {
  if (h == nullptr || buf == nullptr || size == 0) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  const rpc::Port *found = rpc::ports().find(h);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  const rpc::Port port = *found;
  return port.connection->readRaw(port.type, static_cast<unsigned char *>(buf), size);
}

int rpc_port_write(rpc_port_h h, const void *buf, unsigned int size) {
  if (h == nullptr || buf == nullptr || size == 0) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  const rpc::Port *port = rpc::ports().find(h);
  if (port == nullptr || size > rpc::kMaxMessage) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  rpc::OutgoingMessage message(rpc::FrameKind::Raw);
  message.add(buf, size);
  return port->connection->send(port->type, message);
}

int rpc_port_disconnect(rpc_port_h h) {
  if (h == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  const rpc::Port *found = rpc::ports().find(h);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  const rpc::Port port = *found; // The handle goes stale.
  return port.connection->disconnect(port.type);
}

int rpc_port_set_private_sharing(rpc_port_h port, const char *path) {
  return acceptFor(port, path != nullptr);
}

int rpc_port_set_private_sharing_array(rpc_port_h port, const char *paths[], unsigned int size) {
  return acceptFor(port, paths != nullptr && size > 0);
}

int rpc_port_unset_private_sharing(rpc_port_h port) {
  return acceptFor(port, true);
}
