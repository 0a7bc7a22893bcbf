// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_SOCKET_SPARE_DESCRIPTORS_H
#define PLATFORM_RPC_PORT_SOCKET_SPARE_DESCRIPTORS_H

namespace platform::rpc_port {

/// @return Whether this process can open at least `count` more descriptors.
bool hasSpareDescriptors(int count);

} // namespace platform::rpc_port

#endif
