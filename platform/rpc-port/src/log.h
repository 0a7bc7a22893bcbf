// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_LOG_H
#define PLATFORM_RPC_LOG_H

#include <dlog.h>

namespace platform::rpc {

constexpr const char *kLogTag = "RPC_PORT";

} // namespace platform::rpc

#endif
