// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_CONTAINER_H
#define PLATFORM_BUNDLE_CONTAINER_H

#include "entry.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string_view>

/// A bundle: a linked list of entries in order of insertion. A few keys are looked up by a linear
/// search; beyond #kMostUnindexed keys there is an index. It is a tree and not a hash table because
/// other processes choose the keys, and could choose keys that collide.
///
/// Small values are stored inside the bundle, in its room, because allocations are most of the cost
/// of a small bundle. Arrays, and values for which the room is too small, have blocks of their own.
/// The room of a removed entry is reused if the entry was the last one in it.
struct bundle_s {
public:
  // Not defaulted: make_unique() would fill the room with zeros.
  bundle_s() {}
  bundle_s(const bundle_s &) = delete;
  bundle_s &operator=(const bundle_s &) = delete;
  ~bundle_s();

  platform::bundles::Entry *first() const { return _first; }
  std::size_t count() const { return _count; }
  platform::bundles::Entry *find(std::string_view key) const;

  /// Whether another key, with an array of that many slots or 0, stays within the limits.
  bool hasRoomFor(std::string_view key, std::size_t slots) const;

  // These throw std::bad_alloc with nothing changed. The key must be new, and hasRoomFor() it.

  void add(int type, std::string_view key, const void *value, std::size_t size);
  void add(platform::bundles::EntryPtr array);
  void addCopy(platform::bundles::Entry &entry);

  void remove(platform::bundles::Entry *entry);

private:
  using Entry = platform::bundles::Entry;
  using Index = std::map<std::string_view, Entry *>;

  void *allocate(std::size_t size);
  bool isInRoom(const void *block) const;
  void append(Entry *entry);
  void index(Entry *entry);
  void release(Entry *entry);
  void freeOwnBlocks();

  Entry *_first = nullptr;
  Entry *_last = nullptr;
  std::size_t _count = 0;
  std::size_t _keyBytes = 0;
  std::size_t _slots = 0;
  std::size_t _ownBlocks = 0; // Entries that are not in the room.
  std::unique_ptr<Index> _index;
  std::size_t _roomUsed = 0;
  alignas(8) unsigned char _room[platform::bundles::kRoom];
};

#endif
