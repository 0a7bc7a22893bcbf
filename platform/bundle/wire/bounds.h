// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_WIRE_BOUNDS_H
#define PLATFORM_BUNDLE_WIRE_BOUNDS_H

#include <addressSanitizer.h>

#include <climits>
#include <cstddef>
#include <cstdint>

/// Every limit of bundles, in one place. README.md shows them as a table.
namespace platform::bundles {

/// Keys of a bundle. This limit, the next two and the 64 MiB of a message keep the time that a
/// peer's bundle takes to read below 100 ms, whatever it contains.
constexpr std::size_t kMaxKeys = 32768;

/// Bytes of all keys of a bundle together, NULs included: looking a key up compares them.
constexpr std::size_t kMaxKeyBytes = std::size_t{4} << 20;

/// Slots of all arrays of a bundle together: each may be an allocation.
constexpr std::size_t kMaxSlots = 262144;

/// Bytes of a value. Half the address space, so that sizes can be added without overflow.
constexpr std::size_t kLargestValue = PTRDIFF_MAX / 2;

/// Bytes of small values that a bundle stores inside itself. Under AddressSanitizer no value fits:
/// each has a block of its own, so that an access beyond it is reported.
constexpr std::size_t kRoom = kAddressSanitizer ? 8 : 512;

/// Keys up to which a linear search is faster than a tree, and needs no memory.
constexpr std::size_t kMostUnindexed = 32;

/// Bytes of content from which on freeing a bundle gives the free memory of the process back to
/// the system. The allocator keeps small blocks otherwise.
constexpr std::size_t kTrimFrom = std::size_t{8} << 20;

/// Digits of the checksum before an encoded text.
constexpr std::size_t kChecksumDigits = 16;

/// Bytes of the longest wire form whose text, with its NUL, an int can count.
constexpr std::size_t kLargestEncodable = (INT_MAX - kChecksumDigits - 1) / 2;

} // namespace platform::bundles

namespace platform::bundle_wire {

/// Bytes of the longest wire form: bundle_encode() counts in int.
constexpr std::size_t kMaxSize = INT32_MAX;

/// Bytes of the shortest slot of an array: its size alone.
constexpr std::size_t kMinSlotSize = 4;

} // namespace platform::bundle_wire

#endif
