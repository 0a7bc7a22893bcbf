// SPDX-License-Identifier: Apache-2.0
#include "Acceptor.h"

#include "../bounds.h"
#include "../log.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <utility>

namespace platform::rpc {

Acceptor::Acceptor(std::unique_ptr<ListeningSocket> socket, Lobby &lobby)
    : _socket(std::move(socket)), _lobby(lobby), _watch(*this), _rest(&Acceptor::onRested, this) {}

bool Acceptor::start() {
  return _watch.start(_socket->descriptor(), true, false);
}

void Acceptor::descriptorReady(FdWatch::Events /*events*/) {
  for (int i = 0; i < kAcceptsPerTurn && acceptOne(); ++i) {
  }
}

/// @return Whether there may be another one.
bool Acceptor::acceptOne() {
  Descriptor socket(accept4(_socket->descriptor(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (socket) {
    _lobby.add(std::move(socket));
    return true;
  }
  if (errno == EAGAIN) {
    return false;
  }
  if (errno == ECONNABORTED || errno == EINTR) {
    return true;
  }
  // The socket stays readable: watched on, it would keep the loop busy until a descriptor is free.
  dlog_print(DLOG_WARN, kLogTag, "accepting rests for a moment: %s", std::strerror(errno));
  _watch.update(false, false);
  _rest.start(kAcceptPauseSeconds);
  return false;
}

void Acceptor::onRested(void *data) {
  static_cast<Acceptor *>(data)->_watch.update(true, false);
}

} // namespace platform::rpc
