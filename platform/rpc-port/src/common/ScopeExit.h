// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_SCOPE_EXIT_H
#define PLATFORM_RPC_PORT_COMMON_SCOPE_EXIT_H

#include <utility>

namespace platform::rpc_port {

/// A scope guard: runs an action when the block is left, also by an exception of an application's
/// handler.
template <typename Action>
class ScopeExit {
public:
  explicit ScopeExit(Action action) : _action(std::move(action)) {}
  ~ScopeExit() { _action(); }
  ScopeExit(const ScopeExit &) = delete;
  ScopeExit &operator=(const ScopeExit &) = delete;

private:
  Action _action;
};

} // namespace platform::rpc_port

#endif
