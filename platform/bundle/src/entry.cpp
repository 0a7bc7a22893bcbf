// SPDX-License-Identifier: Apache-2.0
#include "entry.h"

#include <SpareBlock.h>

#include <cstring>
#include <numeric>

namespace platform::bundles {
namespace {

void freeBlock(void *block) {
  ::operator delete(block);
}

SpareBlock<freeBlock> spare;

void store(unsigned char *to, const void *value, std::size_t size) {
  constexpr std::uint64_t kZero = 0;
  std::memcpy(to + footprint(size) - sizeof kZero, &kZero, sizeof kZero);
  std::memcpy(to, value, size);
}

Entry *buildHeader(void *block, int type, std::string_view key, std::size_t size) {
  auto *entry = new (block) Entry{nullptr, nullptr, key.size(), size, type};
  char *keyText = reinterpret_cast<char *>(entry + 1);
  std::memcpy(keyText, key.data(), key.size());
  keyText[key.size()] = '\0';
  return entry;
}

// An array of empty slots; room is the size of its value in bytes.
EntryPtr makeArray(int type, std::string_view key, std::size_t length, std::size_t room) {
  void *block = allocateBlock(Entry::valueOffset(key.size()) + room);
  if (block == nullptr) {
    return nullptr;
  }
  Entry *entry = buildHeader(block, type, key, length);
  std::memset(entry->value(), 0, room); // the deleter reads the slots
  return EntryPtr(entry);
}

std::size_t textRoom(const char *const *texts, std::size_t length) {
  std::size_t room = 0;
  for (std::size_t i = 0; texts != nullptr && i < length; ++i) {
    room += texts[i] != nullptr ? footprint(std::strlen(texts[i]) + 1) : 0;
  }
  return room;
}

void storeTexts(Entry &entry, const char *const *texts) {
  auto *to = reinterpret_cast<unsigned char *>(entry.slotSizes() + entry.size);
  for (std::size_t i = 0; i < entry.size; ++i) {
    if (texts[i] == nullptr) {
      continue;
    }
    const std::size_t size = std::strlen(texts[i]) + 1;
    store(to, texts[i], size);
    entry.slots()[i] = to;
    entry.slotSizes()[i] = size;
    to += footprint(size);
  }
}

EntryPtr copyByteArray(Entry &from) {
  EntryPtr copy = makeByteArray(from.key(), from.size);
  for (std::size_t i = 0; copy != nullptr && i < from.size; ++i) {
    const void *element = from.slots()[i];
    if (element != nullptr && !setElement(*copy, i, element, from.slotSizes()[i])) {
      return nullptr;
    }
  }
  return copy;
}

} // namespace

void *allocateBlock(std::size_t size) {
  void *const block = spare.take(size);
  return block != nullptr ? block : ::operator new(size, std::nothrow);
}

void EntryDeleter::operator()(Entry *entry) const noexcept {
  if (entry->isArray()) {
    freeElements(*entry);
    freeBlock(entry);
  } else {
    spare.release(entry, basicBlockSize(entry->keyLength, entry->size));
  }
}

Entry *buildBasic(void *block, int type, std::string_view key, const void *value,
                  std::size_t size) {
  Entry *entry = buildHeader(block, type, key, size);
  store(entry->value(), value, size);
  return entry;
}

EntryPtr makeStrArray(std::string_view key, const char *const *texts, std::size_t length) {
  constexpr std::size_t kSlot = sizeof(void *) + sizeof(std::size_t);
  const std::size_t room = length * kSlot + textRoom(texts, length);
  EntryPtr entry = makeArray(BUNDLE_TYPE_STR_ARRAY, key, length, room);
  if (entry != nullptr && texts != nullptr) {
    storeTexts(*entry, texts);
  }
  return entry;
}

EntryPtr makeByteArray(std::string_view key, std::size_t length) {
  constexpr std::size_t kSlot = sizeof(void *) + sizeof(std::size_t) + sizeof(unsigned int);
  return makeArray(BUNDLE_TYPE_BYTE_ARRAY, key, length, length * kSlot);
}

EntryPtr copyArray(Entry &from) {
  if (from.type == BUNDLE_TYPE_BYTE_ARRAY) {
    return copyByteArray(from);
  }
  return makeStrArray(from.key(), reinterpret_cast<const char *const *>(from.slots()), from.size);
}

bool setElement(Entry &byteArray, std::size_t index, const void *bytes, std::size_t size) {
  void *element = size <= kLargestValue ? allocateBlock(footprint(size)) : nullptr;
  if (element == nullptr) {
    return false;
  }

  store(static_cast<unsigned char *>(element), bytes, size);
  freeBlock(byteArray.slots()[index]); // last: the new bytes may be part of the old element
  byteArray.slots()[index] = element;
  byteArray.slotSizes()[index] = size;
  byteArray.narrowSlotSizes()[index] = static_cast<unsigned int>(size);
  return true;
}

std::size_t bytesOf(Entry &entry) {
  if (!entry.isArray()) {
    return basicBlockSize(entry.keyLength, entry.size);
  }
  const std::size_t *const sizes = entry.slotSizes();
  return Entry::valueOffset(entry.keyLength)
         + std::accumulate(sizes, sizes + entry.size,
                           entry.size * (sizeof(void *) + sizeof *sizes));
}

void freeElements(Entry &entry) {
  if (entry.type == BUNDLE_TYPE_BYTE_ARRAY) {
    for (std::size_t i = 0; i < entry.size; ++i) {
      freeBlock(entry.slots()[i]);
    }
  }
}

} // namespace platform::bundles
