// SPDX-License-Identifier: Apache-2.0
#include "support/frames.h"

namespace support {

std::string frame(std::uint32_t kind, const std::string &payload) {
  return bytes(static_cast<std::uint32_t>(payload.size())) + bytes(kind) + payload;
}

std::string hello(std::uint16_t type, const std::string &instance, const std::string &sender) {
  const std::string magic = "RPCP";
  return magic + bytes(std::uint16_t{1}) + bytes(type)
         + bytes(static_cast<std::uint16_t>(instance.size()))
         + bytes(static_cast<std::uint16_t>(sender.size())) + instance + sender;
}

std::string parcel(const std::string &fields) {
  return std::string(24, '\0') + fields;
}

std::string text(const std::string &characters) {
  return bytes(static_cast<std::uint32_t>(characters.size() + 1)) + characters + '\0';
}

} // namespace support
