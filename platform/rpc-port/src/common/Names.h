// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_NAMES_H
#define PLATFORM_RPC_PORT_COMMON_NAMES_H

#include <string>
#include <string_view>

namespace platform::rpc_port {

/// Whether a text can be used as a file name: application ids and port names become directories and
/// files.
bool isAppId(std::string_view text);
bool isPortName(std::string_view text);

/// @return The id of this application, or an empty string when the process is none.
std::string ownAppId();

/// @return The id of this application, or the name of the program when the process is none.
std::string ownSenderName();

} // namespace platform::rpc_port

#endif
