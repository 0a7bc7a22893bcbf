// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_RAWSOCKET_H
#define NORIX_TESTS_SUPPORT_RAWSOCKET_H

#include "support/FileDescriptor.h"
#include "support/frames.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace support {

/// A Unix stream socket that sends the bytes it is given. Nothing it does waits.
class RawSocket {
public:
  /// @return A socket connected to the path, or nullptr.
  static std::unique_ptr<RawSocket> connectTo(const std::string &path);
  /// @return A socket that listens there, or nullptr.
  static std::unique_ptr<RawSocket> listenAt(const std::string &path);
  /// @return The next connection that waits at a listening socket, or nullptr.
  static std::unique_ptr<RawSocket> acceptFrom(int listening);

  explicit RawSocket(FileDescriptor descriptor) : _descriptor(std::move(descriptor)) {}
  /// Takes the descriptor over.
  explicit RawSocket(int descriptor) : _descriptor(descriptor) {}

  std::unique_ptr<RawSocket> accept() const { return acceptFrom(descriptor()); }
  /// @return false when not everything could be sent at once.
  bool send(std::string_view what);
  /// @return What has arrived.
  std::string receive();
  /// Whether the peer has closed and everything before that has been received.
  bool hasEnded();
  void close() { _descriptor.close(); }
  int descriptor() const { return _descriptor.get(); }

private:
  FileDescriptor _descriptor;
};

} // namespace support

#endif
