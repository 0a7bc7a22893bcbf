// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_FRAME_H
#define PLATFORM_RPC_PORT_WIRE_FRAME_H

#include "wire/Buffer.h"

#include <cstddef>
#include <cstdint>

namespace platform::rpc_port {

/// The kind of a frame.
enum class FrameKind : std::uint32_t {
  Hello = 1,   ///< The first frame of a proxy on each of the two sockets.
  Welcome = 2, ///< The stub's answer to both hellos, the first frame on each socket.
  Parcel = 3,  ///< One parcel.
  Raw = 4      ///< The bytes of one rpc_port_write().
};

/// The prefix of every frame: the payload's length and kind, in the machine's byte order.
struct FramePrefix {
  std::uint32_t size;
  FrameKind kind;
};
static_assert(sizeof(FramePrefix) == 8, "the prefix travels as it lies in memory");

/// A complete received frame.
struct Frame {
  FrameKind kind = FrameKind::Raw;
  Buffer payload;
};

/// The smallest payload of a parcel: its header with an empty tag.
constexpr std::size_t kParcelHeaderSize = 24;

} // namespace platform::rpc_port

#endif
