// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_SOCKET_PORT_SOCKET_H
#define PLATFORM_RPC_PORT_SOCKET_PORT_SOCKET_H

#include "common/Descriptor.h"

#include <memory>
#include <string>
#include <sys/types.h>

namespace platform::rpc_port {

/// The listening socket of a stub, and its file, which it removes when it is destroyed.
class ListeningSocket {
public:
  /// Begins to listen; a file that nobody listens on is replaced.
  /// @return The socket, or nullptr; the log says why.
  static std::unique_ptr<ListeningSocket> open(const std::string &appId, const std::string &port);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket &) = delete;
  ListeningSocket &operator=(const ListeningSocket &) = delete;

  int descriptor() const { return _socket.get(); }
  bool isOf(const std::string &appId, const std::string &port) const;

private:
  ListeningSocket(Descriptor directory, std::string appId, std::string port);
  bool bindAlone();
  bool removeStale();
  bool bindAndListen();
  bool logFailure(const char *what, int number) const;

  Descriptor _directory;
  std::string _appId;
  std::string _port;
  Descriptor _socket;
  dev_t _device = 0;
  ino_t _inode = 0;
};

/// The outcome of an attempt to connect. Busy: the listener's backlog is full; try again later.
enum class ConnectOutcome { Connected, Busy, Failed };

/// A socket connected to a port, or the reason why there is none.
struct ConnectedSocket {
  ConnectOutcome outcome;
  Descriptor descriptor;
  int error;
};

/// Connects to a port without waiting.
ConnectedSocket connectToPort(const std::string &appId, const std::string &port);

} // namespace platform::rpc_port

#endif
