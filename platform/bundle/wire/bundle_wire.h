// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_WIRE_H
#define PLATFORM_BUNDLE_WIRE_H

#include "bounds.h"

#include <bundle.h>

#include <cstddef>
#include <cstdint>

/**
 * A bundle as bytes and back.
 *
 * One bundle has exactly one wire form. All numbers are 32 bits wide, unsigned and in the byte
 * order of the machine: both ends run on it. Nothing is padded.
 *
 *     bundle := count entry{count}                  in order of insertion
 *     entry  := type keySize size key value         keySize counts the key's NUL
 *     value  := bytes{size}                         BUNDLE_TYPE_STR, NUL included, and _BYTE
 *             | (slotSize bytes{slotSize}){size}    BUNDLE_TYPE_STR_ARRAY and _BYTE_ARRAY
 *
 * A slot of size 0 is an empty one; an empty text has size 1. Keys and texts carry their NUL so
 * that a reader can hand them to the bundle where they lie.
 */
namespace platform::bundle_wire {

/**
 * The size in bytes of the wire form of @a b; a null bundle counts as an empty one, which has 4.
 * 0 when the wire form would be longer than #kMaxSize: such a bundle has none.
 */
std::size_t size(bundle *b);

/** Writes the wire form of @a b: exactly size(b) bytes. Not for a bundle that has none. */
void write(bundle *b, unsigned char *out);

/**
 * Both in one pass: writes the wire form of @a b if it takes at most @a room bytes, and returns
 * size(b) in any case. When that is more than @a room, what stands at @a out is of no use.
 */
std::size_t writeWithin(bundle *b, unsigned char *out, std::size_t room);

/**
 * The bundle that exactly these bytes are the wire form of; the caller releases it with
 * bundle_free(). Null, with the reason in the last result, for anything that write() cannot have
 * produced (BUNDLE_ERROR_INVALID_PARAMETER), or without memory (BUNDLE_ERROR_OUT_OF_MEMORY).
 * Nothing is allocated for a length or a count that the bytes at hand do not bear out.
 */
bundle *read(const unsigned char *bytes, std::size_t length);

} // namespace platform::bundle_wire

#endif
