// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PLATFORM_BUNDLE_SUPPORT_WIRE_H
#define TESTS_PLATFORM_BUNDLE_SUPPORT_WIRE_H

#include "Bundles.h"

#include <algorithm>
#include <bundle_wire.h>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// Builds a wire form piece by piece, valid or not.
class Wire {
public:
  Wire &number(std::uint32_t value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    _bytes.insert(_bytes.end(), bytes, bytes + sizeof value);
    return *this;
  }

  Wire &raw(const std::string &bytes) {
    _bytes.insert(_bytes.end(), bytes.begin(), bytes.end());
    return *this;
  }

  /// The header of an entry, and its key with the NUL.
  Wire &entry(std::uint32_t type, const std::string &key, std::uint32_t size) {
    const std::string keyBytes(key.c_str(), key.size() + 1);
    return number(type)
        .number(static_cast<std::uint32_t>(keyBytes.size()))
        .number(size)
        .raw(keyBytes);
  }

  const Bytes &bytes() const { return _bytes; }

private:
  Bytes _bytes;
};

inline Bytes wireOf(bundle *b) {
  Bytes bytes(platform::bundle_wire::size(b));
  platform::bundle_wire::write(b, bytes.data());
  return bytes;
}

/// Reads from a block of exactly that size: memory checkers see any byte read beyond.
inline BundlePtr readWire(const Bytes &bytes) {
  const std::unique_ptr<unsigned char[]> block(new unsigned char[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), block.get());
  return BundlePtr(platform::bundle_wire::read(block.get(), bytes.size()));
}

#endif
