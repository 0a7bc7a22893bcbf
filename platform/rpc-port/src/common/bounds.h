// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_BOUNDS_H
#define PLATFORM_RPC_PORT_COMMON_BOUNDS_H

#include <cstddef>

/**
 * @file bounds.h
 * @brief Every bound of the transport, in one place. README.md shows them as a table.
 */
namespace platform::rpc_port {

/// One message: a parcel with its header, or the bytes of one rpc_port_write().
constexpr std::size_t kMaxMessage = std::size_t{64} << 20;
/// Bytes that wait for a peer which does not read, behind the message that is being sent.
constexpr std::size_t kMaxQueued = std::size_t{16} << 20;

/// From so many bytes on, what waits to be sent is shared with its parcel instead of copied.
constexpr std::size_t kShareFrom = std::size_t{64} << 10;
/// What a socket is asked to take before it makes a sender wait; the system may grant less.
constexpr int kSocketBuffer = 1 << 20;

/// The buffer into which all sockets of the process receive: one call for a burst of messages.
constexpr std::size_t kScratchSize = std::size_t{64} << 10;
/// From so many missing bytes on, a message is received straight into its own buffer.
constexpr std::size_t kDirectReceive = std::size_t{4} << 10;

/// What one turn of the loop does for one connection before the others have theirs.
constexpr std::size_t kBytesPerTurn = std::size_t{1} << 20;
constexpr int kMessagesPerTurn = 64;
constexpr int kAcceptsPerTurn = 32;

/// Sockets that have not become a connection yet. One more, and the oldest has to go.
constexpr std::size_t kMaxGuests = 256;

/// With "/proc/self/fd/<number>/" before it, a port name has to fit in a socket address.
constexpr std::size_t kMaxPortName = 80;
constexpr std::size_t kMaxAppId = 255;
constexpr std::size_t kMaxInstance = 64;
constexpr std::size_t kMaxTag = 4096;

/// A guest of the stub is sent away when it is found waiting by two sweeps in a row.
constexpr double kSweepSeconds = 2.5;
/// How long a proxy waits for the stub's welcome, its attempts to connect included.
constexpr double kWelcomeSeconds = 10.0;
/// Between two attempts to connect to a stub whose backlog is full, or that is of this process.
constexpr double kRetrySeconds = 0.01;
/// How long a read from a proxy's main port waits for the answer.
constexpr double kReplySeconds = 10.0;
/// How long one port of a connection outlives the other while nothing travels on it.
constexpr double kLonePortSeconds = 1.0;
/// How long accepting pauses when descriptors or memory have run out.
constexpr double kAcceptPauseSeconds = 0.1;
/// So many descriptors are left to the application: what it opens itself must not fail because
/// many peers connect.
constexpr int kDescriptorReserve = 8;

} // namespace platform::rpc_port

#endif
