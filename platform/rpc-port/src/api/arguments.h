// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_API_ARGUMENTS_H
#define PLATFORM_RPC_PORT_API_ARGUMENTS_H

#include <new>
#include <rpc-port.h>

namespace platform::rpc_port {

/// Runs an API function's work and turns a lack of memory into its result. Nothing else is caught.
template <typename Work>
int guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc &) {
    return RPC_PORT_ERROR_OUT_OF_MEMORY;
  }
}

inline bool isPortType(rpc_port_port_type_e type) {
  return type == RPC_PORT_PORT_MAIN || type == RPC_PORT_PORT_CALLBACK;
}

} // namespace platform::rpc_port

#endif
