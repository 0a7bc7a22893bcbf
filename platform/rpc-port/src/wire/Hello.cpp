// SPDX-License-Identifier: Apache-2.0
#include "wire/Hello.h"

#include "common/Names.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <string_view>
#include <unistd.h>

namespace platform::rpc_port {

namespace {

constexpr std::uint32_t kMagic = 0x50435052; // "RPCP" on a little-endian machine.

bool isInstance(std::string_view text) {
  const auto isPrintable = [](char c) { return c > ' ' && c <= '~'; };
  return !text.empty() && text.size() <= kMaxInstance
         && std::all_of(text.begin(), text.end(), isPrintable);
}

} // namespace

Buffer encodeHello(const Hello &hello) {
  const HelloHead head{kMagic, kProtocolVersion, static_cast<std::uint16_t>(hello.portType),
                       static_cast<std::uint16_t>(hello.instance.size()),
                       static_cast<std::uint16_t>(hello.sender.size())};
  Buffer payload;
  payload.append(&head, sizeof head);
  payload.append(hello.instance.data(), hello.instance.size());
  payload.append(hello.sender.data(), hello.sender.size());
  return payload;
}

std::optional<Hello> decodeHello(const Buffer &payload) {
  HelloHead head{};
  if (payload.size() < sizeof head) {
    return std::nullopt;
  }
  std::memcpy(&head, payload.data(), sizeof head);
  const std::size_t size = sizeof head + head.instanceSize + head.senderSize;
  if (head.magic != kMagic || head.version != kProtocolVersion
      || head.portType > RPC_PORT_PORT_CALLBACK || size != payload.size()) {
    return std::nullopt;
  }
  const char *texts = reinterpret_cast<const char *>(payload.data()) + sizeof head;
  const std::string_view instance(texts, head.instanceSize);
  const std::string_view sender(texts + head.instanceSize, head.senderSize);
  if (!isInstance(instance) || !isAppId(sender)) {
    return std::nullopt;
  }
  return Hello{static_cast<rpc_port_port_type_e>(head.portType), std::string(instance),
               std::string(sender)};
}

Buffer encodeWelcome() {
  const Welcome welcome{kMagic, kProtocolVersion};
  Buffer payload;
  payload.append(&welcome, sizeof welcome);
  return payload;
}

bool isWelcome(const Buffer &payload) {
  Welcome welcome{};
  if (payload.size() != sizeof welcome) {
    return false;
  }
  std::memcpy(&welcome, payload.data(), sizeof welcome);
  return welcome.magic == kMagic && welcome.version == kProtocolVersion;
}

std::string makeInstance() {
  static unsigned counter = 0;
  std::random_device random;
  const std::uint64_t number = (std::uint64_t{random()} << 32) | random();
  char text[kMaxInstance];
  (void)std::snprintf(text, sizeof text, "%d-%u-%016" PRIx64, static_cast<int>(getpid()), ++counter,
                      number);
  return text;
}

} // namespace platform::rpc_port
