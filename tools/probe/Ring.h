// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_RING_H
#define NORIX_PROBE_RING_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norix::probe {

/// A bounded lock-free queue of byte records: any thread pushes, one at a time pops.
///
/// A push never waits and never allocates; when there is no room it fails, and the caller counts
/// what is lost. It may be interrupted by a signal handler that pushes as well.
class Ring {
public:
  static constexpr std::size_t kCapacity = std::size_t{1} << 20U;
  static constexpr std::size_t kLongestRecord = 8192;

  /// @return false when there is no room
  bool push(const void *record, std::size_t size);

  /// Copies the oldest record, which must fit into kLongestRecord bytes.
  /// @return its size, 0 when there is none
  std::size_t pop(void *record);

  /// Forgets everything. Only while nobody else uses the ring: in a child after fork().
  void reset();

private:
  static constexpr std::size_t kMask = kCapacity - 1;
  // Each record begins with a word: its size, and in the top bit whether it is complete.
  static constexpr std::uint32_t kComplete = 0x80000000U;

  static std::size_t footprint(std::size_t size);
  std::atomic<std::uint32_t> &wordAt(std::uint64_t position);
  void copyIn(std::uint64_t position, const void *from, std::size_t size);
  void copyOut(std::uint64_t position, void *to, std::size_t size);
  void clear(std::uint64_t position, std::size_t size);

  alignas(64) std::atomic<std::uint64_t> _head{0};
  alignas(64) std::atomic<std::uint64_t> _tail{0};
  alignas(64) std::array<unsigned char, kCapacity> _bytes{};
};

} // namespace norix::probe

#endif
