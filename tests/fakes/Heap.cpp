// SPDX-License-Identifier: Apache-2.0
#include "fakes/Heap.h"

#include "fakes/LibraryScope.h"
#include "fakes/Platform.h"

#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);
}

namespace fake {

namespace {

// Set when the heap exists: operator delete runs before and after its life, too.
Heap *known = nullptr;

// Set while the heap changes its own table, whose nodes are of no interest to it.
bool bookkeeping = false;

class Bookkeeping {
public:
  Bookkeeping() { bookkeeping = true; }
  ~Bookkeeping() { bookkeeping = false; }
  Bookkeeping(const Bookkeeping &) = delete;
  Bookkeeping &operator=(const Bookkeeping &) = delete;
};

void *allocate(size_t size) {
  return __real_malloc(size == 0 ? 1 : size);
}

void *noted(void *block, size_t size) {
  if (block != nullptr && runningLibrary()) {
    const OutsideLibrary outside;
    Heap::instance().allocated(block, size, Heap::Owner::Library);
  }
  return block;
}

void release(void *block) {
  if (known != nullptr && block != nullptr && !bookkeeping && known->holds(block)) {
    const OutsideLibrary outside;
    known->released(block);
  }
  __real_free(block);
}

void *throwingNew(size_t size) {
  if (runningLibrary() && Heap::instance().nextNewFails()) {
    throw std::bad_alloc();
  }
  void *block = noted(allocate(size), size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void *nothrowNew(size_t size) noexcept {
  if (!runningLibrary()) {
    return allocate(size);
  }
  const PlatformCall call(kNothrowNew, size);
  if (call.failure()) {
    return nullptr;
  }
  const InsideLibrary inside;
  return noted(allocate(size), size);
}

} // namespace

Heap &Heap::instance() {
  // Never destroyed: blocks are released until the very end of the process.
  static Heap *heap = [] {
    const OutsideLibrary outside;
    known = new Heap;
    return known;
  }();
  return *heap;
}

void Heap::allocated(const void *block, size_t size, Owner owner) {
  const Bookkeeping own;
  _blocks[block] = {owner, size};
}

void Heap::released(const void *block) {
  const Bookkeeping own;
  _blocks.erase(block);
}

std::vector<const void *> Heap::blocksOf(Owner owner) const {
  std::vector<const void *> found;
  for (const auto &[block, known] : _blocks) {
    if (known.owner == owner) {
      found.push_back(block);
    }
  }
  return found;
}

void Heap::forgetAll() {
  const Bookkeeping own;
  _forgotten.insert(_blocks.begin(), _blocks.end());
  _blocks.clear();
  _newsUntilFailure = 0;
}

char *Heap::platformText(const char *text) {
  const size_t size = std::strlen(text) + 1;
  auto *copy = static_cast<char *>(allocate(size));
  std::memcpy(copy, text, size);
  allocated(copy, size, Owner::PlatformText);
  return copy;
}

} // namespace fake

extern "C" {

void *__wrap_malloc(size_t size) {
  return fake::noted(__real_malloc(size), size);
}

void __wrap_free(void *block) {
  fake::release(block);
}

char *__wrap_strdup(const char *text) {
  if (fake::runningLibrary()) {
    const fake::PlatformCall call("strdup", text);
    if (call.failure()) {
      return nullptr;
    }
  }
  const size_t size = std::strlen(text) + 1;
  return static_cast<char *>(std::memcpy(__wrap_malloc(size), text, size));
}
}

void *operator new(size_t size) {
  return fake::throwingNew(size);
}
void *operator new[](size_t size) {
  return fake::throwingNew(size);
}
void *operator new(size_t size, const std::nothrow_t & /*tag*/) noexcept {
  return fake::nothrowNew(size);
}
void *operator new[](size_t size, const std::nothrow_t & /*tag*/) noexcept {
  return fake::nothrowNew(size);
}
void operator delete(void *block) noexcept {
  fake::release(block);
}
void operator delete[](void *block) noexcept {
  fake::release(block);
}
void operator delete(void *block, size_t /*size*/) noexcept {
  fake::release(block);
}
void operator delete[](void *block, size_t /*size*/) noexcept {
  fake::release(block);
}
void operator delete(void *block, const std::nothrow_t & /*tag*/) noexcept {
  fake::release(block);
}
void operator delete[](void *block, const std::nothrow_t & /*tag*/) noexcept {
  fake::release(block);
}
