// SPDX-License-Identifier: Apache-2.0
#include "connection/Acceptor.h"

#include "common/bounds.h"
#include "common/log.h"
#include "socket/spareDescriptors.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace platform::rpc_port {

Acceptor::Acceptor(std::unique_ptr<ListeningSocket> socket, Lobby &lobby)
    : _socket(std::move(socket)), _lobby(lobby),
      _watch(FdWatch::Ready::to<&Acceptor::onConnecting>(*this)),
      _pause(Callback<void()>::to<&Acceptor::onPauseOver>(*this)),
      _port(LocalPort::IsAt::to<&Acceptor::isAt>(*this),
            Callback<void()>::to<&Acceptor::serve>(*this)) {}

bool Acceptor::start() {
  return _watch.start(_socket->descriptor(), true, false);
}

bool Acceptor::isAt(const std::string &appId, const std::string &port) const {
  return _socket->isOf(appId, port);
}

void Acceptor::serve() {
  acceptWaiting();
  _lobby.receiveHellos(); // The last step: a handler may destroy the stub.
}

void Acceptor::onConnecting(FdWatch::Events /*events*/) {
  acceptWaiting();
}

void Acceptor::acceptWaiting() {
  for (int i = 0; i < kAcceptsPerTurn && acceptOne(); ++i) {
  }
}

/// @return Whether there may be another one.
bool Acceptor::acceptOne() {
  if (!hasSpareDescriptors(kDescriptorReserve + 1)) {
    if (isWaiting()) {
      pause("the last descriptors are left to the application");
    }
    return false;
  }
  Descriptor socket(accept4(_socket->descriptor(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (socket) {
    _isShort = false;
    _lobby.add(std::move(socket));
    return true;
  }
  if (errno == EAGAIN) {
    return false;
  }
  if (errno == ECONNABORTED || errno == EINTR) {
    return true;
  }
  pause(std::strerror(errno));
  return false;
}

bool Acceptor::isWaiting() const {
  pollfd entry = {_socket->descriptor(), POLLIN, 0};
  return poll(&entry, 1, 0) == 1;
}

/// The socket stays readable; watching it during the pause would keep the loop busy.
void Acceptor::pause(const char *reason) {
  if (!std::exchange(_isShort, true)) {
    dlog_print(DLOG_WARN, kLogTag, "new connections have to wait: %s", reason);
  }
  _pause.start(kAcceptPauseSeconds);
  _watch.update(!_pause.isRunning(), false); // Without a timer, only the loop can look again.
}

void Acceptor::onPauseOver() {
  _watch.update(true, false);
}

} // namespace platform::rpc_port
