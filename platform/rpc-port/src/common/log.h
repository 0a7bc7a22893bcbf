// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_LOG_H
#define PLATFORM_RPC_PORT_COMMON_LOG_H

#include <dlog.h>

namespace platform::rpc_port {

constexpr const char *kLogTag = "RPC_PORT";

} // namespace platform::rpc_port

#endif
