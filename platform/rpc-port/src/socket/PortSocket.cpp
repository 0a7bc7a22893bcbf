// SPDX-License-Identifier: Apache-2.0
#include "socket/PortSocket.h"

#include "common/Printable.h"
#include "common/log.h"
#include "socket/RuntimeDirectory.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <rpc-port.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace platform::rpc_port {

namespace {

/// How often the lock of the directory is tried, once a millisecond: another stub of the same
/// application may be binding.
constexpr int kLockAttempts = 100;

/// The address of a port in an open directory. Through the descriptor, the directory's path may be
/// of any length, and nothing can be put in its place between the checks and the use.
sockaddr_un addressOf(int directory, const std::string &port) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  (void)std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", directory,
                      port.c_str());
  return address;
}

Descriptor newSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

int connectWith(int socket, int directory, const std::string &port) {
  const sockaddr_un address = addressOf(directory, port);
  return connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

bool lock(int directory) {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    if (flock(directory, LOCK_EX | LOCK_NB) == 0) {
      return true;
    }
    (void)poll(nullptr, 0, 1);
  }
  return false;
}

int logFailureOf(const std::string &appId, const std::string &port, const char *what, int number) {
  dlog_print(DLOG_ERROR, kLogTag, "%s/%s %s: %s", Printable(appId).text(), Printable(port).text(),
             what, std::strerror(number));
  return RPC_PORT_ERROR_IO_ERROR;
}

/// Without /proc, every address fails as if nothing were there.
bool hasProc() {
  if (access("/proc/self/fd", X_OK) == 0) {
    return true;
  }
  dlog_print(DLOG_ERROR, kLogTag,
             "/proc is not mounted, and ports are reached through it: mount -t proc proc /proc");
  return false;
}

int toError(int number) {
  return number == EACCES || number == EPERM ? RPC_PORT_ERROR_PERMISSION_DENIED
                                             : RPC_PORT_ERROR_IO_ERROR;
}

} // namespace

ListeningSocket::ListeningSocket(Descriptor directory, std::string appId, std::string port)
    : _directory(std::move(directory)), _appId(std::move(appId)), _port(std::move(port)),
      _socket(newSocket()) {}

std::unique_ptr<ListeningSocket> ListeningSocket::open(const std::string &appId,
                                                       const std::string &port) {
  OpenedDirectory directory = openPortDirectory(appId, DirectoryUse::Listen);
  if (!directory.descriptor || !hasProc()) {
    return nullptr;
  }
  std::unique_ptr<ListeningSocket> self(
      new ListeningSocket(std::move(directory.descriptor), appId, port));
  if (!self->_socket) {
    (void)self->logFailure("gets no socket", errno);
    return nullptr;
  }
  return self->bindAlone() ? std::move(self) : nullptr;
}

ListeningSocket::~ListeningSocket() {
  // Empty in a forked child, to which the file does not belong.
  if (!_socket || _inode == 0) {
    return;
  }
  struct stat status = {};
  const bool found = fstatat(_directory.get(), _port.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  // Somebody may have removed the file, and another stub may have made its own.
  if (found && status.st_dev == _device && status.st_ino == _inode) {
    (void)unlinkat(_directory.get(), _port.c_str(), 0);
  }
}

/// False in a forked child, where the socket is closed.
bool ListeningSocket::isOf(const std::string &appId, const std::string &port) const {
  return _socket && _appId == appId && _port == port;
}

/// @return false, for the caller to return.
bool ListeningSocket::logFailure(const char *what, int number) const {
  (void)logFailureOf(_appId, _port, what, number);
  return false;
}

/// The lock covers the check for a stale file and its replacement, so that two stubs cannot both
/// replace it.
bool ListeningSocket::bindAlone() {
  if (!lock(_directory.get())) {
    return logFailure("is locked by another process", EWOULDBLOCK);
  }
  const bool isListening = removeStale() && bindAndListen();
  (void)flock(_directory.get(), LOCK_UN);
  return isListening;
}

bool ListeningSocket::removeStale() {
  struct stat status = {};
  if (fstatat(_directory.get(), _port.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT || logFailure("cannot be examined", errno);
  }
  if (!S_ISSOCK(status.st_mode)) {
    return logFailure("is in the way and no socket: remove it", EEXIST);
  }
  const Descriptor probe = newSocket();
  if (!probe) {
    return logFailure("gets no socket", errno);
  }
  // EAGAIN, a full backlog, is a sign of life as well.
  if (connectWith(probe.get(), _directory.get(), _port) == 0 || errno != ECONNREFUSED) {
    return logFailure("is listened on already: end the other process", EADDRINUSE);
  }
  if (unlinkat(_directory.get(), _port.c_str(), 0) != 0 && errno != ENOENT) {
    return logFailure("cannot be replaced", errno);
  }
  return true;
}

bool ListeningSocket::bindAndListen() {
  const sockaddr_un address = addressOf(_directory.get(), _port);
  if (bind(_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    return logFailure("cannot be bound", errno);
  }
  struct stat status = {};
  if (fstatat(_directory.get(), _port.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    _device = status.st_dev;
    _inode = status.st_ino;
  }
  if (listen(_socket.get(), SOMAXCONN) != 0) {
    return logFailure("cannot be listened on", errno);
  }
  return true;
}

ConnectedSocket connectToPort(const std::string &appId, const std::string &port) {
  const auto failed = [](int error) {
    return ConnectedSocket{ConnectOutcome::Failed, Descriptor(), error};
  };
  const OpenedDirectory directory = openPortDirectory(appId, DirectoryUse::Connect);
  if (!directory.descriptor) {
    return failed(directory.error);
  }
  if (!hasProc()) {
    return failed(RPC_PORT_ERROR_IO_ERROR);
  }
  struct stat status = {};
  // connect() would follow a link to wherever it leads.
  if (fstatat(directory.descriptor.get(), port.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0
      || !S_ISSOCK(status.st_mode)) {
    return failed(RPC_PORT_ERROR_IO_ERROR);
  }
  Descriptor socket = newSocket();
  if (!socket) {
    return failed(logFailureOf(appId, port, "gets no socket", errno));
  }
  if (connectWith(socket.get(), directory.descriptor.get(), port) == 0) {
    return {ConnectOutcome::Connected, std::move(socket), RPC_PORT_ERROR_NONE};
  }
  if (errno == EAGAIN) {
    return {ConnectOutcome::Busy, Descriptor(), RPC_PORT_ERROR_NONE};
  }
  return failed(toError(errno));
}

} // namespace platform::rpc_port
