// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_ENTRY_H
#define PLATFORM_BUNDLE_ENTRY_H

#include <bounds.h>
#include <bundle.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>

namespace platform {

/**
 * The memory that a value gets: whole words, at least one, for applications read numbers out of
 * byte values without asking for the size. Eight bytes may always be read, and what is not there is
 * zero.
 */
constexpr std::size_t footprint(std::size_t size) {
  constexpr std::size_t kWord = 8;
  return (size + kWord - 1) / kWord * kWord;
}

} // namespace platform

/**
 * A key with its value: one block of memory that begins with this header and goes on with the key
 * and the value. The value stands last, so that memory checkers see an application read past it.
 *
 * The value of an array is its slots, then their sizes, then for a byte array the sizes once more
 * as bundle_get_byte_array() hands them out, then for a text array the texts. The elements of a
 * byte array are blocks of their own, for they come later and may be replaced.
 */
struct bundle_keyval_s {
  bundle_keyval_s *previous;
  bundle_keyval_s *next;
  std::size_t keyLength;
  std::size_t size; /**< The bytes of a value, a text's NUL included; of an array, its slots. */
  int type;

  bool isArray() const { return (type & BUNDLE_TYPE_ARRAY) != 0; }
  std::size_t slotCount() const { return isArray() ? size : 0; }
  std::string_view key() const { return {reinterpret_cast<const char *>(this + 1), keyLength}; }

  /** Where the value begins, counted from the block's beginning. */
  static std::size_t valueOffset(std::size_t keyLength) {
    return platform::footprint(sizeof(bundle_keyval_s) + keyLength + 1);
  }

  unsigned char *value() {
    return reinterpret_cast<unsigned char *>(this) + valueOffset(keyLength);
  }
  void **slots() { return reinterpret_cast<void **>(value()); }
  std::size_t *slotSizes() { return reinterpret_cast<std::size_t *>(slots() + size); }
  unsigned int *narrowSlotSizes() { return reinterpret_cast<unsigned int *>(slotSizes() + size); }
};

namespace platform {

using Entry = bundle_keyval_s;

/** A block for an entry or an element, or null. */
void *allocateBlock(std::size_t size);

/** For entries in a block of their own. */
struct EntryDeleter {
  void operator()(Entry *entry) const noexcept;
};
using EntryPtr = std::unique_ptr<Entry, EntryDeleter>;

/** The size of the block of an entry that is no array. */
inline std::size_t basicBlockSize(std::size_t keyLength, std::size_t size) {
  return Entry::valueOffset(keyLength) + footprint(size);
}

/** Builds an entry that is no array in a block of basicBlockSize(). */
Entry *buildBasic(void *block, int type, std::string_view key, const void *value, std::size_t size);

// The makers of arrays answer null when there is no memory.

/** @a texts may be null, and so may each of them: the slot then is empty. */
EntryPtr makeStrArray(std::string_view key, const char *const *texts, std::size_t length);
EntryPtr makeByteArray(std::string_view key, std::size_t length);
EntryPtr copyArray(Entry &from);

/** Replaces an element of a byte array; false, and nothing changed, when there is no memory. */
bool setElement(Entry &byteArray, std::size_t index, const void *bytes, std::size_t size);

/** The memory of an entry and its elements, without what the allocator adds. */
std::size_t bytesOf(Entry &entry);

/** Releases what an entry holds outside its block. */
void freeElements(Entry &entry);

} // namespace platform

#endif
