// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_ACCEPTOR_H
#define PLATFORM_RPC_PORT_CONNECTION_ACCEPTOR_H

#include "connection/Lobby.h"
#include "loop/FdWatch.h"
#include "loop/Timer.h"
#include "registry/LocalPort.h"
#include "socket/PortSocket.h"

#include <memory>
#include <string>

namespace platform::rpc_port {

/// Accepts what connects to a stub, and pauses while descriptors or memory are short.
class Acceptor final {
public:
  Acceptor(std::unique_ptr<ListeningSocket> socket, Lobby &lobby);
  Acceptor(const Acceptor &) = delete;
  Acceptor &operator=(const Acceptor &) = delete;

  bool start();

private:
  void onPauseOver();
  void onConnecting(FdWatch::Events events);
  bool isAt(const std::string &appId, const std::string &port) const;
  void serve();
  void acceptWaiting();
  bool acceptOne();
  bool isWaiting() const;
  void pause(const char *reason);

  std::unique_ptr<ListeningSocket> _socket;
  Lobby &_lobby;
  FdWatch _watch;
  Timer _pause;
  bool _isShort = false; // The log has said so since the last connection was accepted.
  LocalPort _port;
};

} // namespace platform::rpc_port

#endif
