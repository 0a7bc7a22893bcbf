// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_OUTGOING_MESSAGE_H
#define PLATFORM_RPC_PORT_WIRE_OUTGOING_MESSAGE_H

#include "wire/Frame.h"

#include <array>
#include <cstddef>
#include <sys/uio.h>

namespace platform::rpc_port {

/// An outgoing frame as an iovec list: one system call sends its pieces, without copies.
class OutgoingMessage {
public:
  explicit OutgoingMessage(FrameKind kind) : _prefix{0, kind} {
    _parts[0] = {&_prefix, sizeof _prefix};
  }
  OutgoingMessage(const OutgoingMessage &) = delete;
  OutgoingMessage &operator=(const OutgoingMessage &) = delete;

  /// Adds a piece, which must stay valid until the message is sent.
  void add(const void *bytes, std::size_t size) {
    _parts[_count++] = {const_cast<void *>(bytes), size};
    _prefix.size += static_cast<std::uint32_t>(size);
  }

  /// Adds the last piece. If it has to be queued, it is shared with `buffer` instead of copied.
  void addShared(Buffer &buffer, std::size_t from) {
    add(buffer.data() + from, buffer.size() - from);
    _shared = &buffer;
  }

  iovec *parts() { return _parts.data(); }
  std::size_t count() const { return _count; }
  /// The buffer that the last piece is the end of, or nullptr.
  Buffer *shared() const { return _shared; }
  std::size_t size() const { return sizeof _prefix + _prefix.size; }

  /// Drops `size` bytes from the front, which have been sent.
  void skip(std::size_t size);

private:
  static constexpr std::size_t kMaxParts = 4;

  FramePrefix _prefix;
  std::array<iovec, kMaxParts> _parts{};
  std::size_t _count = 1;
  Buffer *_shared = nullptr;
};

} // namespace platform::rpc_port

#endif
