// SPDX-License-Identifier: Apache-2.0
#include "memory/heap.h"

#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
}

namespace rpc_test {

namespace {

int untilFailure = 0;

bool isNextToFail() {
  return untilFailure > 0 && --untilFailure == 0;
}

void *allocate(std::size_t size) {
  return isNextToFail() ? nullptr : __real_malloc(size == 0 ? 1 : size);
}

void *allocateOrThrow(std::size_t size) {
  void *const block = allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

} // namespace

void failAllocation(int nth) {
  untilFailure = nth;
}

bool hasFailed() {
  return untilFailure == 0;
}

} // namespace rpc_test

extern "C" {

void *__wrap_malloc(std::size_t size) {
  return rpc_test::allocate(size);
}

void *__wrap_calloc(std::size_t count, std::size_t size) {
  return rpc_test::isNextToFail() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *block, std::size_t size) {
  return rpc_test::isNextToFail() ? nullptr : __real_realloc(block, size);
}

char *__wrap_strdup(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  void *const copy = rpc_test::allocate(size);
  return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}
}

void *operator new(std::size_t size) {
  return rpc_test::allocateOrThrow(size);
}
void *operator new[](std::size_t size) {
  return rpc_test::allocateOrThrow(size);
}
void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept {
  return rpc_test::allocate(size);
}
void *operator new[](std::size_t size, const std::nothrow_t & /*tag*/) noexcept {
  return rpc_test::allocate(size);
}
void operator delete(void *block) noexcept {
  std::free(block);
}
void operator delete[](void *block) noexcept {
  std::free(block);
}
void operator delete(void *block, std::size_t /*size*/) noexcept {
  std::free(block);
}
void operator delete[](void *block, std::size_t /*size*/) noexcept {
  std::free(block);
}
void operator delete(void *block, const std::nothrow_t & /*tag*/) noexcept {
  std::free(block);
}
void operator delete[](void *block, const std::nothrow_t & /*tag*/) noexcept {
  std::free(block);
}
