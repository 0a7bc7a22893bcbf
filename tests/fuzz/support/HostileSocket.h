// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_HOSTILE_SOCKET_H
#define NORIX_FUZZ_HOSTILE_SOCKET_H

#include "support/RawSocket.h"
#include "wire/Frame.h"
#include "wire/Hello.h"

#include <memory>
#include <string>
#include <string_view>

namespace fuzz {

// One socket of a hostile peer. Nothing it does waits, and each call may fail silently.
class HostileSocket {
public:
  // To the port's socket file.
  void connectTo(const std::string &path);
  // Accepts a waiting connection. @return false when none waits.
  bool acceptFrom(int listening);

  void send(std::string_view bytes);
  void sendFrame(platform::rpc_port::FrameKind kind, std::string_view payload);
  void sendHello(const platform::rpc_port::Hello &hello);
  void sendWelcome();
  // A whole parcel of these fields.
  void sendParcel(std::string_view fields);

  // Reads what has arrived.
  std::string receive();
  // Sends nothing more, but still reads.
  void endSending();
  void close() { _socket.reset(); }
  bool isOpen() const { return _socket != nullptr; }

private:
  std::unique_ptr<support::RawSocket> _socket;
};

} // namespace fuzz

#endif
