// SPDX-License-Identifier: Apache-2.0
//
// What the functions do without memory. The bundle's library finds this program's operator new
// before that of the system.
#include "support/Wire.h"

#include <cstdlib>
#include <functional>
#include <new>

namespace {

constexpr int kNever = -1;

// The number of blocks that can still be allocated.
int blocksLeft = kNever;

// Limits the memory to a number of blocks during its lifetime.
class MemoryFor {
public:
  explicit MemoryFor(int blocks) { blocksLeft = blocks; }
  ~MemoryFor() { blocksLeft = kNever; }
  MemoryFor(const MemoryFor &) = delete;
  MemoryFor &operator=(const MemoryFor &) = delete;
};

} // namespace

#pragma GCC visibility push(default)
void *operator new(std::size_t size) {
  void *block = blocksLeft != 0 ? std::malloc(size) : nullptr;
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  if (blocksLeft > 0) {
    --blocksLeft;
  }
  return block;
}

void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

void operator delete(void *block) noexcept {
  std::free(block);
}
void operator delete(void *block, std::size_t /*size*/) noexcept {
  std::free(block);
}
void operator delete(void *block, const std::nothrow_t & /*tag*/) noexcept {
  std::free(block);
}
#pragma GCC visibility pop

namespace {

const std::string kLong(2000, 'x');

// Calls with memory for 0, 1, 2… blocks until the call succeeds. Returns how often it failed.
int failuresOf(const std::function<int()> &call) {
  for (int blocks = 0;; ++blocks) {
    int result = BUNDLE_ERROR_NONE;
    int last = BUNDLE_ERROR_NONE;
    {
      const MemoryFor some(blocks);
      result = call();
      last = get_last_result();
    }
    EXPECT_EQ(last, result);
    if (result == BUNDLE_ERROR_NONE) {
      return blocks;
    }
    EXPECT_EQ(result, BUNDLE_ERROR_OUT_OF_MEMORY);
  }
}

// A bundle of large values.
BundlePtr bundleOf(int count) {
  BundlePtr b = makeBundle();
  for (int i = 0; i < count; ++i) {
    bundle_add_str(b.get(), ("key" + std::to_string(i)).c_str(), kLong.c_str());
  }
  return b;
}

TEST(WithoutMemory, NoBundleIsCreated) {
  bundle *b = nullptr;

  const int failures = failuresOf([&b] {
    b = bundle_create();
    return b != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_OUT_OF_MEMORY;
  });

  EXPECT_EQ(failures, 1);
  bundle_free(b);
}

TEST(WithoutMemory, ALongTextIsNotAdded) {
  const BundlePtr b = makeBundle();

  const int failures = failuresOf([&b] {
    EXPECT_EQ(bundle_get_count(b.get()), 0);
    return bundle_add_str(b.get(), "key", kLong.c_str());
  });

  EXPECT_EQ(failures, 1);
  EXPECT_EQ(bundle_get_val(b.get(), "key"), kLong);
}

TEST(WithoutMemory, ManyBytesAreNotAdded) {
  const BundlePtr b = makeBundle();

  const int failures =
      failuresOf([&b] { return bundle_add_byte(b.get(), "key", kLong.data(), kLong.size()); });

  EXPECT_EQ(failures, 1);
  EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST(WithoutMemory, AnArrayOfTextsIsNotAdded) {
  const BundlePtr b = makeBundle();
  const char *texts[] = {"one", "two"};

  const int failures = failuresOf([&] { return bundle_add_str_array(b.get(), "key", texts, 2); });

  EXPECT_EQ(failures, 1);
  EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST(WithoutMemory, AnElementIsNotReplaced) {
  const BundlePtr b = makeBundle();
  void **slots = nullptr;

  EXPECT_EQ(failuresOf([&] { return bundle_add_byte_array(b.get(), "key", 1); }), 1);
  bundle_set_byte_array_element(b.get(), "key", 0, "a", 2);
  const int failures = failuresOf([&] {
    bundle_get_byte_array(b.get(), "key", &slots, nullptr, nullptr);
    EXPECT_STREQ(static_cast<char *>(slots[0]), "a");
    return bundle_set_byte_array_element(b.get(), "key", 0, "b", 2);
  });

  EXPECT_EQ(failures, 1);
  EXPECT_STREQ(static_cast<char *>(slots[0]), "b");
}

TEST(WithoutMemory, ABundleThatNeedsAnIndexStaysAsItWas) {
  const BundlePtr b = bundleOf(32);

  const int failures = failuresOf([&b] {
    EXPECT_EQ(bundle_get_count(b.get()), 32);
    EXPECT_EQ(bundle_get_val(b.get(), "key31"), kLong);
    return bundle_add_str(b.get(), "more", "x");
  });

  EXPECT_GT(failures, 32);
  EXPECT_STREQ(bundle_get_val(b.get(), "more"), "x");
  EXPECT_EQ(bundle_get_count(b.get()), 33);
}

TEST(WithoutMemory, NothingIsCopied) {
  const BundlePtr b = bundleOf(40);
  addOneOfEach(b.get());
  bundle *copy = nullptr;

  const int failures = failuresOf([&] {
    copy = bundle_dup(b.get());
    return copy != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_OUT_OF_MEMORY;
  });

  EXPECT_GT(failures, 80);
  EXPECT_EQ(keysOf(copy), keysOf(b.get()));
  bundle_free(copy);
}

TEST(WithoutMemory, NothingIsRead) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const Bytes bytes = wireOf(b.get());
  bundle *read = nullptr;

  const int failures = failuresOf([&] {
    read = platform::bundle_wire::read(bytes.data(), bytes.size());
    return read != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_OUT_OF_MEMORY;
  });

  EXPECT_GT(failures, 3);
  expectOneOfEach(read);
  bundle_free(read);
}

TEST(WithoutMemory, NothingIsEncodedOrDecoded) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  bundle_raw *raw = nullptr;
  int length = 0;
  bundle *decoded = nullptr;

  EXPECT_EQ(failuresOf([&] { return bundle_encode(b.get(), &raw, &length); }), 1);
  const int failures = failuresOf([&] {
    decoded = bundle_decode(raw, length);
    return decoded != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_OUT_OF_MEMORY;
  });

  EXPECT_GT(failures, 3);
  expectOneOfEach(decoded);
  bundle_free(decoded);
  std::free(raw);
}

} // namespace
