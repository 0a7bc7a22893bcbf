// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_HOSTILE_SOCKET_H
#define NORIX_FUZZ_HOSTILE_SOCKET_H

#include "socket/Descriptor.h"
#include "wire/Frame.h"
#include "wire/Hello.h"

#include <string>
#include <string_view>

namespace fuzz {

// One socket of a peer that keeps to no rules. Nothing it does waits, and all of it may fail.
class HostileSocket {
public:
  // To the port's socket file.
  void connectTo(const std::string &path);
  // The next one that waits at the listening socket. @return false when nobody waits.
  bool acceptFrom(int listening);

  void send(std::string_view bytes);
  void sendFrame(platform::rpc_port::FrameKind kind, std::string_view payload);
  void sendHello(const platform::rpc_port::Hello &hello);
  void sendWelcome();
  // A whole parcel of these fields.
  void sendParcel(std::string_view fields);

  // Reads all that is there.
  std::string receive();
  // Sends nothing more, but still reads.
  void endSending();
  void close() { _socket.close(); }
  bool isOpen() const { return static_cast<bool>(_socket); }

private:
  platform::rpc_port::Descriptor _socket;
};

} // namespace fuzz

#endif
