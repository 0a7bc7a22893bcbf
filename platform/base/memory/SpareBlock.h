// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BASE_MEMORY_SPARE_BLOCK_H
#define PLATFORM_BASE_MEMORY_SPARE_BLOCK_H

#include <addressSanitizer.h>

#include <atomic>
#include <cstddef>
#include <new>

namespace platform {

/// A cache of one large block of memory: the last one released, for the next one of about its size.
///
/// An allocator returns large blocks to the system at once, which fills every page with zeros again
/// for the next message: that takes several times as long as copying the message. Only one block is
/// kept, so that an idle process holds little memory.
///
/// The blocks come from the user's allocator; @a Free releases one, also null. Any thread may call
/// it. An object of static storage needs neither construction nor destruction.
template <void (*Free)(void *)>
class SpareBlock {
public:
  /// Smaller blocks: the allocator is fast.
  static constexpr std::size_t kSmallest = std::size_t{32} << 10;
  /// Larger blocks are rare, and too large to keep.
  static constexpr std::size_t kLargest = std::size_t{4} << 20;

  /// The kept block if it has @a size bytes but less than twice as many; otherwise null.
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

  /// Keeps a block of @a size bytes in place of the one kept so far, or frees it.
  void release(void *block, std::size_t size) {
    if (isKept(size)) {
      block = _block.exchange(new (block) Block{size});
    }
    Free(block);
  }

private:
  /// The content of a kept block.
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
