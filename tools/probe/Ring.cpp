// SPDX-License-Identifier: Apache-2.0
#include "probe/Ring.h"

#include <algorithm>
#include <cstring>

namespace norix::probe {
namespace {

constexpr std::size_t kWord = sizeof(std::uint32_t);

} // namespace

// Records begin at multiples of a word, so that no word wraps around the end.
std::size_t Ring::footprint(std::size_t size) {
  return (kWord + size + kWord - 1) / kWord * kWord;
}

std::atomic<std::uint32_t> &Ring::wordAt(std::uint64_t position) {
  static_assert(sizeof(std::atomic<std::uint32_t>) == kWord);
  return *reinterpret_cast<std::atomic<std::uint32_t> *>(&_bytes[position & kMask]);
}

bool Ring::push(const void *record, std::size_t size) {
  const std::size_t needed = footprint(size);
  std::uint64_t start = _head.load(std::memory_order_relaxed);
  do {
    if (start + needed - _tail.load(std::memory_order_acquire) > kCapacity) {
      return false;
    }
  } while (!_head.compare_exchange_weak(start, start + needed, std::memory_order_relaxed));

  copyIn(start + kWord, record, size);
  wordAt(start).store(static_cast<std::uint32_t>(size) | kComplete, std::memory_order_release);
  return true;
}

std::size_t Ring::pop(void *record) {
  const std::uint64_t start = _tail.load(std::memory_order_relaxed);
  if (start == _head.load(std::memory_order_relaxed)) {
    return 0;
  }
  const std::uint32_t word = wordAt(start).load(std::memory_order_acquire);
  if ((word & kComplete) == 0) {
    return 0;
  }
  const std::size_t size = word & ~kComplete;
  copyOut(start + kWord, record, size);
  // Whoever writes here next must not find a word that looks complete.
  clear(start, footprint(size));
  _tail.store(start + footprint(size), std::memory_order_release);
  return size;
}

void Ring::reset() {
  clear(_tail.load(std::memory_order_relaxed), kCapacity);
  _tail.store(0, std::memory_order_relaxed);
  _head.store(0, std::memory_order_relaxed);
}

void Ring::copyIn(std::uint64_t position, const void *from, std::size_t size) {
  const std::size_t offset = position & kMask;
  const std::size_t first = std::min(size, kCapacity - offset);
  std::memcpy(&_bytes[offset], from, first);
  if (first < size) {
    std::memcpy(_bytes.data(), static_cast<const unsigned char *>(from) + first, size - first);
  }
}

void Ring::copyOut(std::uint64_t position, void *to, std::size_t size) {
  const std::size_t offset = position & kMask;
  const std::size_t first = std::min(size, kCapacity - offset);
  std::memcpy(to, &_bytes[offset], first);
  std::memcpy(static_cast<unsigned char *>(to) + first, _bytes.data(), size - first);
}

void Ring::clear(std::uint64_t position, std::size_t size) {
  const std::size_t offset = position & kMask;
  const std::size_t first = std::min(size, kCapacity - offset);
  std::memset(&_bytes[offset], 0, first);
  std::memset(_bytes.data(), 0, size - first);
}

} // namespace norix::probe
