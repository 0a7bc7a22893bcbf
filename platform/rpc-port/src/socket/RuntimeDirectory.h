// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_SOCKET_RUNTIME_DIRECTORY_H
#define PLATFORM_RPC_PORT_SOCKET_RUNTIME_DIRECTORY_H

#include "socket/Descriptor.h"

#include <string>

namespace platform::rpc_port {

/// Whether missing directories are made (a stub) or mean that nobody listens (a proxy).
enum class DirectoryUse { Listen, Connect };

/// A directory, or the rpc_port_error_e that says why there is none.
struct OpenedDirectory {
  Descriptor descriptor;
  int error;
};

/**
 * @brief Opens the directory in which an application's ports lie.
 * @details `$XDG_RUNTIME_DIR/rpc-port/<app id>`, or `<temporary directory>/rpc-port-<uid>/<app id>`
 *          without that variable. Each step is taken from the directory before, never through a
 *          symbolic link, and only into directories that are the user's own and closed to others.
 *          Anything else is logged, with what to do about it, and refused.
 */
OpenedDirectory openPortDirectory(const std::string &appId, DirectoryUse use);

} // namespace platform::rpc_port

#endif
