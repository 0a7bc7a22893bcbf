// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_ECORE_USE_H
#define PLATFORM_RPC_PORT_LOOP_ECORE_USE_H

namespace platform::rpc_port {

/// Keeps Ecore initialised as long as a stub or a proxy lives. Ecore deadlocks on a timer added
/// before ecore_init() and crashes on one added after the last ecore_shutdown(); this frees
/// applications of that order. The last user shuts Ecore down, except from inside the loop, which
/// would crash; leaving it initialised costs nothing.
class EcoreUse {
public:
  EcoreUse();
  ~EcoreUse();
  EcoreUse(const EcoreUse &) = delete;
  EcoreUse &operator=(const EcoreUse &) = delete;

  /// @return Whether Ecore is there at all.
  static bool isReady();
  /// In a forked child, stops what its parent has registered with the loop, unless that was done.
  static void leaveParent();
};

} // namespace platform::rpc_port

#endif
