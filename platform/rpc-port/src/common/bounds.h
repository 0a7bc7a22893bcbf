// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_BOUNDS_H
#define PLATFORM_RPC_PORT_COMMON_BOUNDS_H

#include <cstddef>

/// Every bound of the transport, in one place. README.md shows them as a table.
namespace platform::rpc_port {

/// One message: a parcel with its header, or the bytes of one rpc_port_write().
constexpr std::size_t kMaxMessage = std::size_t{64} << 20;
/// Back-pressure on senders: the bytes queued for a peer that does not read, behind the message
/// that is being sent.
constexpr std::size_t kMaxQueued = std::size_t{16} << 20;

/// A queued piece of at least this size is shared with its parcel instead of copied.
constexpr std::size_t kShareFrom = std::size_t{64} << 10;
/// The send buffer requested for each socket; the system may grant less.
constexpr int kSocketBuffer = 1 << 20;

/// The buffer into which all sockets of the process receive: one call for a burst of messages.
constexpr std::size_t kScratchSize = std::size_t{64} << 10;
/// When at least this many bytes of a message are missing, they are received into its own buffer.
constexpr std::size_t kDirectReceive = std::size_t{4} << 10;

/// The share of one connection in one turn of the loop.
constexpr std::size_t kBytesPerTurn = std::size_t{1} << 20;
constexpr int kMessagesPerTurn = 64;
constexpr int kAcceptsPerTurn = 32;

/// Accepted sockets without a connection yet. Beyond that the oldest one is closed.
constexpr std::size_t kMaxGuests = 256;

/// With "/proc/self/fd/<number>/" before it, a port name has to fit in a socket address.
constexpr std::size_t kMaxPortName = 80;
constexpr std::size_t kMaxAppId = 255;
constexpr std::size_t kMaxInstance = 64;
constexpr std::size_t kMaxTag = 4096;

/// Time between two sweeps of a stub's guests; a guest is refused by the second sweep that finds
/// it.
constexpr double kSweepSeconds = 2.5;
/// How long a proxy waits for the stub's welcome, including its attempts to connect.
constexpr double kWelcomeSeconds = 10.0;
/// Time between two attempts to connect to a stub whose backlog is full, or that is in this
/// process.
constexpr double kRetrySeconds = 0.01;
/// How long a read from a proxy's main port waits for the answer.
constexpr double kReplySeconds = 10.0;
/// How long one port of a connection outlives the other while nothing travels on it.
constexpr double kLonePortSeconds = 1.0;
/// How long accepting pauses when descriptors or memory have run out.
constexpr double kAcceptPauseSeconds = 0.1;
/// Descriptors left to the application: what it opens itself must not fail because many peers
/// connect.
constexpr int kDescriptorReserve = 8;

} // namespace platform::rpc_port

#endif
