// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_FRAME_READER_H
#define PLATFORM_RPC_PORT_WIRE_FRAME_READER_H

#include "wire/Frame.h"
#include "wire/Inbox.h"

#include <array>
#include <cstddef>

namespace platform::rpc_port {

/// Assembles frames from a byte stream. It receives nothing itself: space() says where to receive,
/// take() is told how many bytes came. Memory is allocated for what has arrived, not for what a
/// length claims. After take() has returned false, it must not be used further.
class FrameReader {
public:
  struct Space {
    unsigned char *bytes;
    std::size_t size;
  };

  /// @param greeting What the first frame has to be, and no later one may be.
  explicit FrameReader(FrameKind greeting) : _greeting(greeting) {}

  /// The place to receive into: usually a buffer that all readers share, for the rest of a long
  /// frame its own payload. Between receiving and take(), no other reader's space() may be called.
  Space space();

  /// Adds the frames that `size` more bytes have completed to `inbox`.
  /// @return false for bytes that are not of this protocol; the frames before them are added.
  /// @throw std::bad_alloc
  bool take(std::size_t size, Inbox &inbox);

  /// Whether nothing was taken yet.
  bool isUntouched() const { return !_isGreeted && _prefixBytes == 0; }
  /// Whether the first frame, the greeting, has arrived.
  bool isGreeted() const { return _isGreeted; }

private:
  std::size_t missing() const { return _prefix.size - _frame.payload.size(); }
  void reserve(std::size_t arrived);
  bool takePrefix(const unsigned char *&bytes, std::size_t &size);
  void takePayload(const unsigned char *&bytes, std::size_t &size);
  bool accept();
  void finishIfWhole(Inbox &inbox);

  FrameKind _greeting;
  bool _isGreeted = false;
  bool _isDirect = false;
  bool _hasPrefix = false;
  std::size_t _prefixBytes = 0;
  std::array<unsigned char, sizeof(FramePrefix)> _partialPrefix{};
  FramePrefix _prefix{};
  Frame _frame;
};

} // namespace platform::rpc_port

#endif
