// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_HELLO_H
#define PLATFORM_RPC_PORT_WIRE_HELLO_H

#include "common/bounds.h"
#include "wire/Buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <rpc-port.h>
#include <string>

namespace platform::rpc_port {

/// The protocol version. Peers of another version are refused.
constexpr std::uint16_t kProtocolVersion = 1;

/// The first frame of the handshake: a proxy sends one on each of the two sockets of a connection.
/// The instance ties the two together. The sender's id is only a claim; nothing attests it among
/// the processes of one user.
struct Hello {
  rpc_port_port_type_e portType;
  std::string instance;
  std::string sender;
};

/// The hello's fixed part: magic, version, port type, and the lengths of the two texts.
struct HelloHead {
  std::uint32_t magic;
  std::uint16_t version;
  std::uint16_t portType;
  std::uint16_t instanceSize;
  std::uint16_t senderSize;
};
constexpr std::size_t kHelloHeadSize = 12;
static_assert(sizeof(HelloHead) == kHelloHeadSize, "the head travels as it lies in memory");
constexpr std::size_t kMaxHello = kHelloHeadSize + kMaxInstance + kMaxAppId;

/// The stub's answer in the handshake: the magic number and the version.
struct Welcome {
  std::uint32_t magic;
  std::uint32_t version;
};
constexpr std::size_t kWelcomeSize = 8;
static_assert(sizeof(Welcome) == kWelcomeSize, "the welcome travels as it lies in memory");

Buffer encodeHello(const Hello &hello);
std::optional<Hello> decodeHello(const Buffer &payload);

Buffer encodeWelcome();
bool isWelcome(const Buffer &payload);

/// @return A new, globally unique name for a connection.
std::string makeInstance();

} // namespace platform::rpc_port

#endif
