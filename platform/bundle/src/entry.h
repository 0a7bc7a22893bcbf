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

namespace platform::bundles {

/// The bytes allocated for a value: its size rounded up to whole words of eight bytes, at least
/// one. Applications read numbers from byte values without asking for the size: they read zeros
/// beyond the value.
constexpr std::size_t footprint(std::size_t size) {
  constexpr std::size_t kWord = 8;
  return (size + kWord - 1) / kWord * kWord;
}

} // namespace platform::bundles

/// A key with its value, in one block of memory: this header, the key, the value. The value comes
/// last, so that memory checkers report an access beyond it.
///
/// The value of an array consists of its slots and their sizes, followed in a byte array by the
/// sizes in the type of bundle_get_byte_array(), and in a text array by the texts. The elements of
/// a byte array have blocks of their own: they are added later and may be replaced.
struct bundle_keyval_s {
  bundle_keyval_s *previous;
  bundle_keyval_s *next;
  std::size_t keyLength;
  std::size_t size; ///< of a value in bytes, a text's NUL included; of an array in slots
  int type;

  bool isArray() const { return (type & BUNDLE_TYPE_ARRAY) != 0; }
  std::size_t slotCount() const { return isArray() ? size : 0; }
  std::string_view key() const { return {reinterpret_cast<const char *>(this + 1), keyLength}; }

  /// The offset of the value in the block.
  static std::size_t valueOffset(std::size_t keyLength) {
    return platform::bundles::footprint(sizeof(bundle_keyval_s) + keyLength + 1);
  }

  unsigned char *value() {
    return reinterpret_cast<unsigned char *>(this) + valueOffset(keyLength);
  }
  void **slots() { return reinterpret_cast<void **>(value()); }
  std::size_t *slotSizes() { return reinterpret_cast<std::size_t *>(slots() + size); }
  unsigned int *narrowSlotSizes() { return reinterpret_cast<unsigned int *>(slotSizes() + size); }
};

namespace platform::bundles {

using Entry = bundle_keyval_s;

/// Allocates a block for an entry or an element; null without memory.
void *allocateBlock(std::size_t size);

/// Releases an entry that has a block of its own.
struct EntryDeleter {
  void operator()(Entry *entry) const noexcept;
};
using EntryPtr = std::unique_ptr<Entry, EntryDeleter>;

/// The size of the block of a basic entry: a text or bytes.
inline std::size_t basicBlockSize(std::size_t keyLength, std::size_t size) {
  return Entry::valueOffset(keyLength) + footprint(size);
}

/// Builds a basic entry in a block of basicBlockSize().
Entry *buildBasic(void *block, int type, std::string_view key, const void *value, std::size_t size);

// These return null without memory.

/// A null text makes an empty slot; null instead of the texts makes all slots empty.
EntryPtr makeStrArray(std::string_view key, const char *const *texts, std::size_t length);
EntryPtr makeByteArray(std::string_view key, std::size_t length);
EntryPtr copyArray(Entry &from);

/// Replaces an element of a byte array; false, with nothing changed, without memory.
bool setElement(Entry &byteArray, std::size_t index, const void *bytes, std::size_t size);

/// The bytes of an entry and its elements, without the allocator's overhead.
std::size_t bytesOf(Entry &entry);

/// Releases the elements that have blocks of their own.
void freeElements(Entry &entry);

} // namespace platform::bundles

#endif
