// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_WIRE_H
#define PLATFORM_BUNDLE_WIRE_H

#include "bounds.h"

#include <bundle.h>

#include <cstddef>
#include <cstdint>

/// The wire form of a bundle: its serialisation in parcels, and inside an encoded text.
///
/// Each bundle has exactly one wire form. All numbers are 32 bits wide, unsigned and in the byte
/// order of the machine, on which both ends run. Nothing is padded.
///
///     bundle := count entry{count}                  in order of insertion
///     entry  := type keySize size key value         keySize counts the key's NUL
///     value  := bytes{size}                         BUNDLE_TYPE_STR, NUL included, and _BYTE
///             | (slotSize bytes{slotSize}){size}    BUNDLE_TYPE_STR_ARRAY and _BYTE_ARRAY
///
/// A slot of size 0 is empty; an empty text has size 1. Keys and texts include their NUL so that
/// the reader can pass them to the bundle in place.
namespace platform::bundle_wire {

/// The number of bytes of the wire form; 4 for an empty bundle and for null. 0 when it would be
/// longer than #kMaxSize: such a bundle has no wire form.
std::size_t size(bundle *b);

/// Writes the wire form: exactly size(b) bytes. The bundle must have one.
void write(bundle *b, unsigned char *out);

/// Writes the wire form if it takes at most @a room bytes, and returns size(b) in any case, in one
/// pass. If that is more than @a room, the content of @a out is undefined.
std::size_t writeWithin(bundle *b, unsigned char *out, std::size_t room);

/// Makes the bundle that has these bytes as its wire form; the caller releases it with
/// bundle_free(). Null on failure, with the last result BUNDLE_ERROR_INVALID_PARAMETER for bytes
/// that write() does not produce, or BUNDLE_ERROR_OUT_OF_MEMORY. Allocates nothing for a length or
/// a count that exceeds the bytes that follow it.
bundle *read(const unsigned char *bytes, std::size_t length);

} // namespace platform::bundle_wire

#endif
