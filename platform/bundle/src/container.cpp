// SPDX-License-Identifier: Apache-2.0
#include "container.h"

#include <cstdint>
#include <cstring>
#include <malloc.h>
#include <new>
#include <utility>

namespace bundles = platform::bundles;

using bundles::Entry;
using bundles::EntryDeleter;
using bundles::EntryPtr;
using bundles::kRoom;

bundle_s::~bundle_s() {
  // In most bundles every entry is in the room, and needs nothing.
  if (_ownBlocks > 0) {
    freeOwnBlocks();
  }
}

void bundle_s::freeOwnBlocks() {
  std::size_t freed = 0;
  for (Entry *next = nullptr; _first != nullptr; _first = next) {
    next = _first->next;
    freed += bundles::bytesOf(*_first);
    if (!isInRoom(_first)) {
      EntryDeleter()(_first);
    }
  }
  if (freed >= bundles::kTrimFrom) {
    _index.reset();
    malloc_trim(0);
  }
}

Entry *bundle_s::find(std::string_view key) const {
  if (_index != nullptr) {
    const auto found = _index->find(key);
    return found != _index->end() ? found->second : nullptr;
  }

  Entry *entry = _first;
  while (entry != nullptr && entry->key() != key) {
    entry = entry->next;
  }
  return entry;
}

bool bundle_s::hasRoomFor(std::string_view key, std::size_t slots) const {
  return _count < bundles::kMaxKeys && key.size() < bundles::kMaxKeyBytes - _keyBytes
         && slots <= bundles::kMaxSlots - _slots;
}

void bundle_s::add(int type, std::string_view key, const void *value, std::size_t size) {
  if (size > bundles::kLargestValue) {
    throw std::bad_alloc();
  }
  void *block = allocate(bundles::basicBlockSize(key.size(), size));
  append(bundles::buildBasic(block, type, key, value, size));
}

void bundle_s::add(EntryPtr array) {
  if (array == nullptr) {
    throw std::bad_alloc();
  }
  ++_ownBlocks;
  append(array.release());
}

void bundle_s::addCopy(Entry &entry) {
  if (entry.isArray()) {
    add(bundles::copyArray(entry));
    return;
  }

  const std::size_t size = bundles::basicBlockSize(entry.keyLength, entry.size);
  void *block = allocate(size);
  std::memcpy(block, &entry, size);
  append(static_cast<Entry *>(block));
}

void bundle_s::remove(Entry *entry) {
  if (_index != nullptr) {
    _index->erase(entry->key());
  }

  (entry->previous != nullptr ? entry->previous->next : _first) = entry->next;
  (entry->next != nullptr ? entry->next->previous : _last) = entry->previous;
  --_count;
  _keyBytes -= entry->keyLength + 1;
  _slots -= entry->slotCount();
  release(entry);
}

void *bundle_s::allocate(std::size_t size) {
  if (size <= kRoom - _roomUsed) {
    return _room + std::exchange(_roomUsed, _roomUsed + size);
  }

  void *block = bundles::allocateBlock(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++_ownBlocks;
  return block;
}

bool bundle_s::isInRoom(const void *block) const {
  // One comparison: the difference of an address below the room wraps around to a large number.
  return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(_room) < kRoom;
}

// Owns the entry from here on, also when it throws.
void bundle_s::append(Entry *entry) {
  if (_index != nullptr || _count >= bundles::kMostUnindexed) {
    index(entry);
  }

  entry->next = nullptr;
  entry->previous = _last;
  (_last != nullptr ? _last->next : _first) = entry;
  _last = entry;
  ++_count;
  _keyBytes += entry->keyLength + 1;
  _slots += entry->slotCount();
}

void bundle_s::index(Entry *entry) {
  try {
    if (_index == nullptr) {
      auto index = std::make_unique<Index>();
      for (Entry *known = _first; known != nullptr; known = known->next) {
        index->emplace(known->key(), known);
      }
      _index = std::move(index);
    }
    _index->emplace(entry->key(), entry);
  } catch (const std::bad_alloc &) {
    release(entry);
    throw;
  }
}

void bundle_s::release(Entry *entry) {
  if (!isInRoom(entry)) {
    EntryDeleter()(entry);
    --_ownBlocks;
    return;
  }

  const std::size_t size = bundles::basicBlockSize(entry->keyLength, entry->size);
  auto *block = reinterpret_cast<unsigned char *>(entry);
  if (block + size == _room + _roomUsed) {
    _roomUsed -= size;
  }
}
