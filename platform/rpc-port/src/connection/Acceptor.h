// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_CONNECTION_ACCEPTOR_H
#define PLATFORM_RPC_CONNECTION_ACCEPTOR_H

#include "../loop/FdWatch.h"
#include "../loop/Timer.h"
#include "../socket/PortSocket.h"
#include "Lobby.h"

#include <memory>

namespace platform::rpc {

/// Accepts what connects to a stub, and rests for a while when descriptors have run out.
class Acceptor final : private FdWatch::Target {
public:
  Acceptor(std::unique_ptr<ListeningSocket> socket, Lobby &lobby);

  bool start();

private:
  static void onRested(void *data);
  void descriptorReady(FdWatch::Events events) override;
  bool acceptOne();

  std::unique_ptr<ListeningSocket> _socket;
  Lobby &_lobby;
  FdWatch _watch;
  Timer _rest;
};

} // namespace platform::rpc

#endif
