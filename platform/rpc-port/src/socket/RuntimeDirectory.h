// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_SOCKET_RUNTIME_DIRECTORY_H
#define PLATFORM_RPC_PORT_SOCKET_RUNTIME_DIRECTORY_H

#include "common/Descriptor.h"

#include <string>

namespace platform::rpc_port {

/// Listen creates missing directories; to Connect, a missing one means that nobody listens.
enum class DirectoryUse { Listen, Connect };

/// An open directory, or the rpc_port_error_e that says why there is none.
struct OpenedDirectory {
  Descriptor descriptor;
  int error;
};

/// Opens the directory of an application's ports: `$XDG_RUNTIME_DIR/rpc-port/<app id>`, or
/// `<temporary directory>/rpc-port-<uid>/<app id>` without that variable. Each component is opened
/// relative to the one before, without following symbolic links, and only if it is the user's own
/// and closed to others. Anything else is refused, and the log says what to do about it.
OpenedDirectory openPortDirectory(const std::string &appId, DirectoryUse use);

} // namespace platform::rpc_port

#endif
