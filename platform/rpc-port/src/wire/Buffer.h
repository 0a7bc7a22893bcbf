// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_BUFFER_H
#define PLATFORM_RPC_PORT_WIRE_BUFFER_H

#include <cstddef>
#include <cstring>

namespace platform::rpc_port {

/// A growable copy-on-write byte buffer. It uses realloc() instead of a vector: new space is not
/// zeroed, and large buffers grow by remapping pages instead of copying.
class Buffer {
public:
  Buffer() = default;
  Buffer(Buffer &&other) noexcept;
  Buffer &operator=(Buffer &&other) noexcept;
  ~Buffer() {
    if (_bytes != nullptr) {
      releaseBytes();
    }
  }

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

  /// The reserved room behind the last byte; take() appends what was written there.
  unsigned char *room() { return _bytes + _size; }
  std::size_t roomSize() const { return _capacity - _size; }
  void take(std::size_t size) { _size += size; }

  /// Drops the bytes from `size` on, to undo a failed write.
  void truncate(std::size_t size) { _size = size; }

  /// @return A second holder of the same bytes. Who writes first gets a copy of its own.
  Buffer share();

private:
  unsigned char *extendByGrowing(std::size_t size);
  void grow(std::size_t capacity);
  void moveTo(void *memory);
  void releaseBytes();

  unsigned char *_bytes = nullptr; // Behind the count of its holders.
  std::size_t _size = 0;
  std::size_t _capacity = 0;
};

} // namespace platform::rpc_port

#endif
