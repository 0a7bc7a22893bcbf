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

/**
 * Keys of a bundle. They, the two bounds that follow and the 64 MiB that a message may have keep
 * whoever reads a peer's bundle busy for less than 100 ms, whatever is in it.
 */
constexpr std::size_t kMaxKeys = 32768;

/** Bytes of all keys of a bundle together, NULs included: finding a key compares them. */
constexpr std::size_t kMaxKeyBytes = std::size_t{4} << 20;

/** Slots of all arrays of a bundle together: each may be an allocation. */
constexpr std::size_t kMaxSlots = 262144;

/**
 * A bundle that held this many bytes gives its memory back to the system when it is freed. The
 * allocator would keep what lay in small blocks.
 */
constexpr std::size_t kTrimFrom = std::size_t{8} << 20;

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
