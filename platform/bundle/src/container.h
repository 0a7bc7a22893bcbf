// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_CONTAINER_H
#define PLATFORM_BUNDLE_CONTAINER_H

#include "entry.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string_view>

/**
 * The entries of a bundle in order of insertion. A few keys are found by looking at each; a bundle
 * that has grown past that keeps a tree of them: not a hash table, for the keys come from other
 * processes, which could choose them to collide.
 *
 * The entries of a small bundle lie inside it, for memory by the piece is the larger part of what
 * building, copying and freeing one costs. Arrays, and what finds no room there, have a block of
 * their own. Room that a removed entry leaves is used again when it was the last one.
 */
struct bundle_s {
public:
  // Not defaulted: with that, make_unique() would clear the room, which nobody needs.
  bundle_s() {}
  bundle_s(const bundle_s &) = delete;
  bundle_s &operator=(const bundle_s &) = delete;
  ~bundle_s();

  platform::Entry *first() const { return _first; }
  std::size_t count() const { return _count; }
  platform::Entry *find(std::string_view key) const;

  /** Whether another key with an array of that many slots, or none, keeps to the bounds. */
  bool hasRoomFor(std::string_view key, std::size_t slots) const;

  // These throw std::bad_alloc and then have changed nothing. The bundle does not have the key, and
  // has room for it.

  void add(int type, std::string_view key, const void *value, std::size_t size);
  void add(platform::EntryPtr array);
  void addCopy(platform::Entry &entry);

  void remove(platform::Entry *entry);

private:
  using Index = std::map<std::string_view, platform::Entry *>;

  void *allocate(std::size_t size);
  bool isInRoom(const void *block) const;
  void append(platform::Entry *entry);
  void index(platform::Entry *entry);
  void release(platform::Entry *entry);

  platform::Entry *_first = nullptr;
  platform::Entry *_last = nullptr;
  std::size_t _count = 0;
  std::size_t _keyBytes = 0;
  std::size_t _slots = 0;
  std::unique_ptr<Index> _index;
  std::size_t _roomUsed = 0;
  alignas(8) unsigned char _room[platform::kRoom];
};

#endif
