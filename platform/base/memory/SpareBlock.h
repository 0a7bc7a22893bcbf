// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BASE_MEMORY_SPARE_BLOCK_H
#define PLATFORM_BASE_MEMORY_SPARE_BLOCK_H

#include <addressSanitizer.h>

#include <atomic>
#include <cstddef>
#include <new>

namespace platform {

/**
 * The last large block of memory that was released, kept for the next one of about its size.
 *
 * An allocator gives large blocks back to the system at once, which then clears every page anew for
 * the next message: several times what copying the message costs. One block is kept and not more,
 * for what a process holds on to while it is idle is to stay small.
 *
 * The blocks come from its user's allocator, to which @a Free gives them back; it stands null. Any
 * thread may call it. An object of static storage needs no construction and no destruction.
 */
template <void (*Free)(void *)>
class SpareBlock {
public:
  /** Smaller ones are quick to get from the allocator. */
  static constexpr std::size_t kSmallest = std::size_t{32} << 10;
  /** Larger ones are rare, and too much to hold on to. */
  static constexpr std::size_t kLargest = std::size_t{4} << 20;

  /** The kept block if it has @a size bytes but not twice as many; otherwise null. */
  void *take(std::size_t size) {
    if (!isKept(size)) {
      return nullptr;
    }
    Block *const block = _block.exchange(nullptr);
    if (block != nullptr && block->size >= size && block->size / 2 < size) {
      return block;
    }
    Free(block);
    return nullptr;
  }

  /** Takes a block of @a size bytes in, instead of the one kept so far. */
  void release(void *block, std::size_t size) {
    if (isKept(size)) {
      block = _block.exchange(new (block) Block{size});
    }
    Free(block);
  }

private:
  /** What stands in a block while nobody else uses it. */
  struct Block {
    std::size_t size;
  };

  static bool isKept(std::size_t size) {
    return !kAddressSanitizer && size >= kSmallest && size <= kLargest;
  }

  std::atomic<Block *> _block{nullptr};
};

} // namespace platform

#endif
