// SPDX-License-Identifier: Apache-2.0
#include "support/Bundles.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

struct FreeDeleter {
  void operator()(void *memory) const { std::free(memory); }
};
using Raw = std::unique_ptr<bundle_raw, FreeDeleter>;

struct Encoded {
  Raw raw;
  int length = 0;
};

Encoded encode(bundle *b) {
  bundle_raw *raw = nullptr;
  int length = 0;
  EXPECT_EQ(bundle_encode(b, &raw, &length), BUNDLE_ERROR_NONE);
  return {Raw(raw), length};
}

std::string textOf(const Encoded &encoded) {
  return reinterpret_cast<const char *>(encoded.raw.get());
}

TEST(Encoding, SetsTheLastResult) {
  const BundlePtr b = makeBundle();
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  encode(b.get());

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
}

TEST(Encoding, MakesPrintableText) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());

  const std::string text = textOf(encode(b.get()));

  EXPECT_GT(text.size(), 100U);
  EXPECT_EQ(text.find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(Encoding, GivesALengthThatCountsTheNul) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());

  const Encoded encoded = encode(b.get());

  EXPECT_EQ(static_cast<std::size_t>(encoded.length), textOf(encoded).size() + 1);
}

TEST(Encoding, MakesTheSameTextOfEqualBundles) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const BundlePtr copy(bundle_dup(b.get()));

  EXPECT_EQ(textOf(encode(b.get())), textOf(encode(copy.get())));
}

TEST(Encoding, TakesAnEmptyBundle) {
  const BundlePtr b = makeBundle();

  // The checksum of four zero bytes, and the bytes: a text that must not change between versions.
  EXPECT_EQ(textOf(encode(b.get())), "4d25767f9dce13f500000000");
}

TEST(Encoding, NeedsABundle) {
  bundle_raw *raw = nullptr;
  int length = 7;

  expectResult(bundle_encode(nullptr, &raw, &length), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(raw, nullptr);
  EXPECT_EQ(length, 7);
}

TEST(Encoding, NeedsSomewhereToPutTheText) {
  const BundlePtr b = makeBundle();
  int length = 7;

  expectResult(bundle_encode(b.get(), nullptr, &length), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(length, 7);
}

TEST(Encoding, NeedsSomewhereToPutTheLength) {
  const BundlePtr b = makeBundle();
  bundle_raw *raw = nullptr;

  expectResult(bundle_encode(b.get(), &raw, nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(raw, nullptr);
}

} // namespace
