// SPDX-License-Identifier: Apache-2.0
#include "wire/Buffer.h"

#include <SpareBlock.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace platform::rpc_port {

namespace {

/// Header in front of the bytes. Atomic, because parcels may be made and destroyed on any thread.
struct alignas(std::max_align_t) Head {
  std::atomic<unsigned> holders;
};

/// Initial capacity: enough for a usual message, so that writing its fields allocates once.
constexpr std::size_t kSmallest = 496;

Head *headOf(unsigned char *bytes) {
  return reinterpret_cast<Head *>(bytes) - 1;
}

unsigned char *bytesOf(void *head) {
  return reinterpret_cast<unsigned char *>(static_cast<Head *>(head) + 1);
}

void *checked(void *memory) {
  return memory != nullptr ? memory : throw std::bad_alloc();
}

SpareBlock<std::free> spare;

} // namespace

Buffer::Buffer(Buffer &&other) noexcept
    : _bytes(std::exchange(other._bytes, nullptr)), _size(std::exchange(other._size, 0)),
      _capacity(std::exchange(other._capacity, 0)) {}

Buffer &Buffer::operator=(Buffer &&other) noexcept {
  std::swap(_bytes, other._bytes);
  std::swap(_size, other._size);
  std::swap(_capacity, other._capacity);
  return *this;
}

Buffer Buffer::share() {
  Buffer other;
  if (_bytes != nullptr) {
    headOf(_bytes)->holders.fetch_add(1);
    // Without room, neither can write without passing through grow().
    _capacity = _size;
    other._bytes = _bytes;
    other._size = other._capacity = _size;
  }
  return other;
}

unsigned char *Buffer::extendByGrowing(std::size_t size) {
  grow(std::max({_size + size, 2 * _capacity, kSmallest}));
  return extend(size);
}

void Buffer::grow(std::size_t capacity) {
  const std::size_t size = sizeof(Head) + capacity;
  const bool isAlone = _bytes != nullptr && headOf(_bytes)->holders.load() == 1;
  if (void *memory = spare.take(size)) {
    moveTo(memory);
  } else if (isAlone) {
    _bytes = bytesOf(checked(std::realloc(headOf(_bytes), size)));
  } else {
    moveTo(checked(std::malloc(size)));
  }
  _capacity = capacity;
}

void Buffer::moveTo(void *memory) {
  unsigned char *const bytes = bytesOf(new (memory) Head{{1}});
  if (_bytes != nullptr) {
    std::memcpy(bytes, _bytes, _size);
    releaseBytes();
  }
  _bytes = bytes;
}

void Buffer::releaseBytes() {
  if (headOf(_bytes)->holders.fetch_sub(1) == 1) {
    spare.release(headOf(_bytes), sizeof(Head) + _capacity);
  }
  _bytes = nullptr;
}

} // namespace platform::rpc_port
