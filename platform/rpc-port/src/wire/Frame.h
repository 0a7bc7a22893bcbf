// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_FRAME_H
#define PLATFORM_RPC_PORT_WIRE_FRAME_H

#include "wire/Buffer.h"

#include <cstddef>
#include <cstdint>

namespace platform::rpc_port {

/// What a frame carries.
enum class FrameKind : std::uint32_t {
  Hello = 1,   ///< The first frame of a proxy on each of the two sockets.
  Welcome = 2, ///< The stub's answer to both hellos, the first frame on each socket.
  Parcel = 3,  ///< One parcel.
  Raw = 4      ///< The bytes of one rpc_port_write().
};

/// What precedes every frame's payload: its length and kind, in the machine's byte order.
struct FramePrefix {
  std::uint32_t size;
  FrameKind kind;
};
static_assert(sizeof(FramePrefix) == 8, "the prefix travels as it lies in memory");

/// A frame that has arrived whole.
struct Frame {
  FrameKind kind = FrameKind::Raw;
  Buffer payload;
};

/// The shortest payload that a parcel can have: its header with an empty tag.
constexpr std::size_t kParcelHeaderSize = 24;

} // namespace platform::rpc_port

#endif
