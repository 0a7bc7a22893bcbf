// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_ECORE_USE_H
#define PLATFORM_RPC_PORT_LOOP_ECORE_USE_H

namespace platform::rpc_port {

/**
 * @brief Keeps Ecore initialised as long as a stub or a proxy lives.
 * @details Ecore deadlocks on a timer added before ecore_init() and crashes on one added after the
 *          last ecore_shutdown(); an application need not get that order right. The last user
 *          shuts down what it initialised, except from inside the loop: Ecore would pull the
 *          ground from under its own feet, and keeping it costs nothing.
 */
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
