// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_BUFFER_H
#define PLATFORM_RPC_PORT_WIRE_BUFFER_H

#include <cstddef>
#include <cstring>

namespace platform::rpc_port {

/**
 * @brief Bytes that grow, and that two can hold without a copy.
 * @details On realloc() and not on a vector: new space is not cleared only to be overwritten, and
 *          megabytes move to a larger place by a change of the page table instead of a copy.
 */
class Buffer {
public:
  Buffer() = default;
  Buffer(Buffer &&other) noexcept;
  Buffer &operator=(Buffer &&other) noexcept;
  ~Buffer() { release(); }

  const unsigned char *data() const { return _bytes; }
  std::size_t size() const { return _size; }
  bool empty() const { return _size == 0; }

  /// Makes room for so many bytes in all. @throw std::bad_alloc, and nothing has changed.
  void reserve(std::size_t capacity) {
    if (capacity > _capacity) {
      grow(capacity);
    }
  }

  /// Makes the buffer longer by `size` bytes, which the caller writes. @throw std::bad_alloc
  unsigned char *extend(std::size_t size) {
    if (size > _capacity - _size) {
      return extendByGrowing(size);
    }
    unsigned char *place = _bytes + _size;
    _size += size;
    return place;
  }

  void append(const void *bytes, std::size_t size) {
    if (size > 0) {
      std::memcpy(extend(size), bytes, size);
    }
  }

  /// Room behind the last byte, as far as it is reserved; take() makes bytes of what was put there.
  unsigned char *room() { return _bytes + _size; }
  std::size_t roomSize() const { return _capacity - _size; }
  void take(std::size_t size) { _size += size; }

  /// Makes it as short as it was before a write that has failed.
  void truncate(std::size_t size) { _size = size; }

  /// @return A second holder of the same bytes. Who writes first gets a copy of its own.
  Buffer share();

private:
  unsigned char *extendByGrowing(std::size_t size);
  void grow(std::size_t capacity);
  void moveTo(void *memory);
  void release();

  unsigned char *_bytes = nullptr; // Behind the count of its holders.
  std::size_t _size = 0;
  std::size_t _capacity = 0;
};

} // namespace platform::rpc_port

#endif
