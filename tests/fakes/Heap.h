// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_HEAP_H
#define NORIX_FAKES_HEAP_H

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace fake {

/// The heap blocks that the library has to release: those that it allocated, and the texts that the
/// platform handed to it. operator new and delete are replaced, malloc, strdup and free are wrapped
/// by the linker.
class Heap {
public:
  enum class Owner {
    Library,      // allocated by the library
    PlatformText, // a text that the platform allocated for the library
  };

  struct Block {
    Owner owner;
    size_t size;
  };

  /// The one heap of the process; blocks stay known until they are released.
  static Heap &instance();

  void allocated(const void *block, size_t size, Owner owner);
  void released(const void *block);
  bool holds(const void *block) const { return _blocks.count(block) != 0; }
  /// Forgets the blocks of earlier tests.
  void forgetAll();

  /// The next nth throwing operator new of the library throws std::bad_alloc; 1 is the next.
  void failNew(int nth) { _newsUntilFailure = nth; }
  bool nextNewFails() { return _newsUntilFailure > 0 && --_newsUntilFailure == 0; }

  /// A copy as the platform hands it out.
  char *platformText(const char *text);

  const std::unordered_map<const void *, Block> &blocks() const { return _blocks; }
  std::vector<const void *> blocksOf(Owner owner) const;

private:
  std::unordered_map<const void *, Block> _blocks;
  /// Keeps forgotten blocks reachable, so that a leak checker does not report them.
  std::unordered_map<const void *, Block> _forgotten;
  int _newsUntilFailure = 0;
};

} // namespace fake

#endif
