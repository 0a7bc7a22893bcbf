// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_BOUNDS_H
#define PLATFORM_BUNDLE_BOUNDS_H

#include <addressSanitizer.h>

#include <climits>
#include <cstddef>
#include <cstdint>

/**
 * @file bounds.h
 * @brief Every bound of bundles, in one place. README.md shows them as a table.
 */
namespace platform {

/** Beyond it no block can exist; half the address space leaves room to add without overflow. */
constexpr std::size_t kLargestValue = PTRDIFF_MAX / 2;

/**
 * What a bundle holds of small values inside itself, in bytes. Under AddressSanitizer that is too
 * little for any: each value is then guarded by itself.
 */
constexpr std::size_t kRoom = kAddressSanitizer ? 8 : 512;

/** Up to this many keys, looking at each is faster than a tree and needs no memory. */
constexpr std::size_t kMostUnindexed = 32;

namespace bundle_wire {

/** The longest wire form: bundle_encode() counts in int. */
constexpr std::size_t kMaxSize = INT32_MAX;

/** The fewest bytes of an array's slot: its size. */
constexpr std::size_t kMinSlotSize = 4;

} // namespace bundle_wire

/** The digits of the checksum before an encoded text. */
constexpr std::size_t kChecksumDigits = 16;

/** The longest wire form whose text, with its NUL, an int can count. */
constexpr std::size_t kLargestEncodable = (INT_MAX - kChecksumDigits - 1) / 2;

} // namespace platform

#endif
