// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_FRAMES_H
#define NORIX_TESTS_SUPPORT_FRAMES_H

#include <cstdint>
#include <string>

namespace support {

/// The kinds of frame, written down a second time on purpose: a change on the wire must fail a
/// test.
enum Kind : std::uint32_t { kHello = 1, kWelcome = 2, kParcel = 3, kRaw = 4 };

/// A frame as it travels.
std::string frame(std::uint32_t kind, const std::string &payload);

/// A hello's payload.
std::string hello(std::uint16_t type, const std::string &instance, const std::string &sender);

/// A parcel's payload, with a header of zeros and these fields.
std::string parcel(const std::string &fields);

/// A parcel's text field.
std::string text(const std::string &characters);

/// A number's bytes.
template <typename Number>
std::string bytes(Number number) {
  return {reinterpret_cast<const char *>(&number), sizeof number};
}

} // namespace support

#endif
