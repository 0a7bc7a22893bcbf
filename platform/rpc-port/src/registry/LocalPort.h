// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_REGISTRY_LOCAL_PORT_H
#define PLATFORM_RPC_PORT_REGISTRY_LOCAL_PORT_H

#include "common/Callback.h"
#include "common/LinkedList.h"

#include <string>

namespace platform::rpc_port {

/// A listening port of this process, registered as long as it lives. A proxy that connects
/// synchronously blocks the loop, and with it a stub of the same process, which would never answer:
/// the proxy serves the stub's port itself.
class LocalPort : public Linked<LocalPort> {
public:
  /// Whether this is the port of that application and name.
  using IsAt = Callback<bool(const std::string &appId, const std::string &port)>;

  LocalPort(IsAt isAt, Callback<void()> serve);
  ~LocalPort();
  LocalPort(const LocalPort &) = delete;
  LocalPort &operator=(const LocalPort &) = delete;

  /// Does the loop's work at a port. @return Whether it is one of this process.
  static bool serve(const std::string &appId, const std::string &port);

private:
  IsAt _isAt;
  Callback<void()> _serve;
};

} // namespace platform::rpc_port

#endif
