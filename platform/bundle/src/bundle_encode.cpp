// SPDX-License-Identifier: Apache-2.0
//
// A bundle as text: a checksum and the wire form, both as hexadecimal digits, and a NUL.
#include <bundle.h>

#include "bundle_wire.h"
#include "result.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

using platform::bundles::finish;
using platform::bundles::kChecksumDigits;
using platform::bundles::kLargestEncodable;
namespace wire = platform::bundle_wire;

namespace {

// FNV-1a. Each step is a bijection, so that every single wrong byte is detected.
std::uint64_t checksumOf(const unsigned char *bytes, std::size_t size) {
  std::uint64_t sum = 0xcbf29ce484222325U;
  for (std::size_t i = 0; i < size; ++i) {
    sum = (sum ^ bytes[i]) * 0x100000001b3U;
  }
  return sum;
}

void putByte(bundle_raw *out, unsigned int byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  out[0] = static_cast<bundle_raw>(kDigits[byte >> 4U]);
  out[1] = static_cast<bundle_raw>(kDigits[byte & 0xfU]);
}

void putChecksum(bundle_raw *out, std::uint64_t sum) {
  for (unsigned int shift = 64; shift > 0; out += 2) {
    shift -= 8;
    putByte(out, static_cast<unsigned int>(sum >> shift) & 0xffU);
  }
}

// The value of a digit in lower case; more than 15 for anything else.
unsigned int digitOf(bundle_raw c) {
  if (c >= '0' && c <= '9') {
    return c - static_cast<unsigned int>('0');
  }
  return c >= 'a' && c <= 'f' ? c - static_cast<unsigned int>('a') + 10 : UINT_MAX;
}

bool takeBytes(const bundle_raw *digits, std::vector<unsigned char> &bytes) {
  for (unsigned char &byte : bytes) {
    const unsigned int high = digitOf(digits[0]);
    const unsigned int low = digitOf(digits[1]);
    if (high > 0xfU || low > 0xfU) {
      return false;
    }
    byte = static_cast<unsigned char>(high << 4U | low);
    digits += 2;
  }
  return true;
}

// The text of a wire form; null without memory.
bundle_raw *encodeWire(const std::vector<unsigned char> &bytes) {
  auto *text = static_cast<bundle_raw *>(std::malloc(kChecksumDigits + 2 * bytes.size() + 1));
  if (text == nullptr) {
    return nullptr;
  }

  putChecksum(text, checksumOf(bytes.data(), bytes.size()));
  bundle_raw *out = text + kChecksumDigits;
  for (const unsigned char byte : bytes) {
    putByte(out, byte);
    out += 2;
  }
  *out = '\0';
  return text;
}

// The number of digits, without the NUL that may follow them; 0 if the size is invalid.
std::size_t digitsOf(const bundle_raw *r, int data_size) {
  if (r == nullptr || data_size <= 0) {
    return 0;
  }
  const auto size = static_cast<std::size_t>(data_size);
  const std::size_t digits = r[size - 1] == '\0' ? size - 1 : size;
  return digits > kChecksumDigits && digits % 2 == 0 ? digits : 0;
}

bundle *decodeDigits(const bundle_raw *r, std::size_t digits) {
  std::vector<unsigned char> bytes((digits - kChecksumDigits) / 2);
  bundle_raw checksum[kChecksumDigits];
  const bool whole = takeBytes(r + kChecksumDigits, bytes);
  putChecksum(checksum, checksumOf(bytes.data(), bytes.size()));
  if (!whole || std::memcmp(checksum, r, sizeof checksum) != 0) {
    finish(BUNDLE_ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  return wire::read(bytes.data(), bytes.size());
}

int encode(bundle *b, bundle_raw **r, int *len) {
  const std::size_t size = wire::size(b);
  if (size == 0 || size > kLargestEncodable) {
    return BUNDLE_ERROR_OUT_OF_MEMORY;
  }

  std::vector<unsigned char> bytes(size);
  wire::write(b, bytes.data());
  bundle_raw *text = encodeWire(bytes);
  if (text == nullptr) {
    return BUNDLE_ERROR_OUT_OF_MEMORY;
  }
  *r = text;
  *len = static_cast<int>(kChecksumDigits + 2 * size + 1);
  return BUNDLE_ERROR_NONE;
}

} // namespace

int bundle_encode(bundle *b, bundle_raw **r, int *len) {
  if (b == nullptr || r == nullptr || len == nullptr) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  try {
    return finish(encode(b, r, len));
  } catch (const std::bad_alloc &) {
    return finish(BUNDLE_ERROR_OUT_OF_MEMORY);
  }
}

bundle *bundle_decode(const bundle_raw *r, const int data_size) {
  const std::size_t digits = digitsOf(r, data_size);
  if (digits == 0) {
    finish(BUNDLE_ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  try {
    return decodeDigits(r, digits);
  } catch (const std::bad_alloc &) {
    finish(BUNDLE_ERROR_OUT_OF_MEMORY);
    return nullptr;
  }
}
