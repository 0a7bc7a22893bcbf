// SPDX-License-Identifier: Apache-2.0
#include "support/Bundles.h"

#include <climits>
#include <cstdint>
#include <functional>
#include <ostream>

namespace {

struct Adder {
  const char *name;
  std::function<int(bundle *, const char *)> add;
};

void PrintTo(const Adder &row, std::ostream *out) {
  *out << row.name;
}

// The four functions that add a key.
class AddingAKey : public testing::TestWithParam<Adder> {};

INSTANTIATE_TEST_SUITE_P(
    OfEachType, AddingAKey,
    testing::Values(
        Adder{"Str", [](bundle *b, const char *key) { return bundle_add_str(b, key, "x"); }},
        Adder{"Byte", [](bundle *b, const char *key) { return bundle_add_byte(b, key, "x", 1); }},
        Adder{"StrArray",
              [](bundle *b, const char *key) {
                const char *texts[] = {"x"};
                return bundle_add_str_array(b, key, texts, 1);
              }},
        Adder{"ByteArray",
              [](bundle *b, const char *key) { return bundle_add_byte_array(b, key, 1); }}),
    [](const auto &row) { return std::string(row.param.name); });

TEST_P(AddingAKey, Succeeds) {
  const BundlePtr b = makeBundle();
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  const int result = GetParam().add(b.get(), "key");

  expectResult(result, BUNDLE_ERROR_NONE);
  EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST_P(AddingAKey, NeedsABundle) {
  expectResult(GetParam().add(nullptr, "key"), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_P(AddingAKey, NeedsAKey) {
  const BundlePtr b = makeBundle();

  const int result = GetParam().add(b.get(), nullptr);

  expectResult(result, BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST_P(AddingAKey, NeedsAKeyThatIsNotEmpty) {
  const BundlePtr b = makeBundle();

  const int result = GetParam().add(b.get(), "");

  expectResult(result, BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST_P(AddingAKey, IsRefusedTheSecondTime) {
  const BundlePtr b = makeBundle();
  GetParam().add(b.get(), "key");

  const int result = GetParam().add(b.get(), "key");

  expectResult(result, BUNDLE_ERROR_KEY_EXISTS);
  EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST_P(AddingAKey, KeepsTheFirstValueOfAKey) {
  const BundlePtr b = makeBundle();
  bundle_add_str(b.get(), "key", "first");

  const int result = GetParam().add(b.get(), "key");

  expectResult(result, BUNDLE_ERROR_KEY_EXISTS);
  EXPECT_STREQ(bundle_get_val(b.get(), "key"), "first");
}

TEST_P(AddingAKey, CopiesTheKey) {
  const BundlePtr b = makeBundle();
  std::string key = "key";

  GetParam().add(b.get(), key.c_str());
  key[0] = 'X';

  EXPECT_EQ(keysOf(b.get()), std::vector<std::string>{"key"});
}

TEST(AddingAText, NeedsAText) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_str(b.get(), "key", nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(AddingAText, CopiesIt) {
  const BundlePtr b = makeBundle();
  std::string text = "text";

  bundle_add_str(b.get(), "key", text.c_str());
  text[0] = 'X';

  EXPECT_STREQ(bundle_get_val(b.get(), "key"), "text");
}

TEST(AddingAText, TakesAnEmptyOne) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_str(b.get(), "key", ""), BUNDLE_ERROR_NONE);
  EXPECT_STREQ(bundle_get_val(b.get(), "key"), "");
}

TEST(AddingAText, TakesALongOne) {
  const BundlePtr b = makeBundle();
  const std::string text(1 << 20, 'x');

  bundle_add_str(b.get(), "key", text.c_str());

  EXPECT_EQ(bundle_get_val(b.get(), "key"), text);
}

TEST(AddingAText, TakesOneOfItsOwn) {
  const BundlePtr b = makeBundle();
  bundle_add_str(b.get(), "key", "text");

  bundle_add_str(b.get(), "copy", bundle_get_val(b.get(), "key"));

  EXPECT_STREQ(bundle_get_val(b.get(), "copy"), "text");
}

TEST(AddingAText, TakesAKeyOfAnyBytes) {
  const BundlePtr b = makeBundle();

  bundle_add_str(b.get(), "\x01\xff \n", "text");

  EXPECT_STREQ(bundle_get_val(b.get(), "\x01\xff \n"), "text");
}

TEST(AddingBytes, NeedsBytes) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte(b.get(), "key", nullptr, 1), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(AddingBytes, NeedsAtLeastOne) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte(b.get(), "key", "x", 0), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(AddingBytes, RefusesASizeThatNoMemoryHas) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte(b.get(), "key", "x", SIZE_MAX), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_byte(b.get(), "key", "x", SIZE_MAX / 2), BUNDLE_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(AddingBytes, CopiesThem) {
  const BundlePtr b = makeBundle();
  std::uint64_t number = 0x0102030405060708;
  void *bytes = nullptr;
  std::size_t size = 0;

  bundle_add_byte(b.get(), "key", &number, sizeof number);
  number = 0;

  ASSERT_EQ(bundle_get_byte(b.get(), "key", &bytes, &size), BUNDLE_ERROR_NONE);
  ASSERT_EQ(size, 8U);
  EXPECT_EQ(*static_cast<std::uint64_t *>(bytes), 0x0102030405060708U);
}

TEST(AddingAnArrayOfTexts, NeedsALengthAboveZero) {
  const BundlePtr b = makeBundle();
  const char *texts[] = {"x"};

  for (const int length : {0, -1, INT_MIN}) {
    expectResult(bundle_add_str_array(b.get(), "key", texts, length),
                 BUNDLE_ERROR_INVALID_PARAMETER);
    expectResult(bundle_add_str_array(b.get(), "key", nullptr, length),
                 BUNDLE_ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(AddingAnArrayOfBytes, NeedsALengthAboveZero) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte_array(b.get(), "key", 0), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

} // namespace
