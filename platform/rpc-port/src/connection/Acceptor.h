// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_ACCEPTOR_H
#define PLATFORM_RPC_PORT_CONNECTION_ACCEPTOR_H

#include "connection/Lobby.h"
#include "loop/FdWatch.h"
#include "loop/Timer.h"
#include "socket/PortSocket.h"

#include <memory>
#include <string>

namespace platform::rpc_port {

/// Accepts what connects to a stub, and pauses while descriptors or memory are short.
class Acceptor final : private FdWatch::Target {
public:
  Acceptor(std::unique_ptr<ListeningSocket> socket, Lobby &lobby);
  ~Acceptor();
  Acceptor(const Acceptor &) = delete;
  Acceptor &operator=(const Acceptor &) = delete;

  bool start();

  /**
   * @brief Does the loop's work at a port of this process, for a caller that holds the loop up.
   * @return Whether there is such a port.
   */
  static bool serve(const std::string &appId, const std::string &port);

private:
  static void onPauseOver(void *data);
  void descriptorReady(FdWatch::Events events) override;
  void acceptWaiting();
  bool acceptOne();
  bool isWaiting() const;
  void pause(const char *reason);

  std::unique_ptr<ListeningSocket> _socket;
  Lobby &_lobby;
  FdWatch _watch;
  Timer _pause;
  bool _isShort = false; // The log has said so since the last connection was accepted.
};

} // namespace platform::rpc_port

#endif
