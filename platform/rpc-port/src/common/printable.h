// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_PRINTABLE_H
#define PLATFORM_RPC_PORT_COMMON_PRINTABLE_H

#include <string>
#include <string_view>

namespace platform::rpc_port {

/**
 * @brief A text for a log message, with `\x1b` in place of a byte that is not printable ASCII.
 * @details Names and paths come from other processes and from the environment; an escape sequence
 *          in one of them must not reach the terminal that shows the log.
 */
std::string printable(std::string_view text);

} // namespace platform::rpc_port

#endif
