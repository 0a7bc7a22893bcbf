// SPDX-License-Identifier: Apache-2.0
#include "support/Bundles.h"

#include <climits>
#include <cstdint>

namespace {

TEST(AnArrayOfTexts, HoldsItsTexts) {
  const BundlePtr b = makeBundle();
  const char *texts[] = {"one", "two", "a text of more than sixteen bytes"};
  int length = 0;

  bundle_add_str_array(b.get(), "key", texts, 3);
  const char **held = bundle_get_str_array(b.get(), "key", &length);

  ASSERT_EQ(length, 3);
  EXPECT_STREQ(held[0], "one");
  EXPECT_STREQ(held[1], "two");
  EXPECT_STREQ(held[2], "a text of more than sixteen bytes");
}

TEST(AnArrayOfTexts, CopiesItsTexts) {
  const BundlePtr b = makeBundle();
  std::string text = "one";
  const char *texts[] = {text.c_str()};

  bundle_add_str_array(b.get(), "key", texts, 1);
  text[0] = 'X';

  EXPECT_STREQ(bundle_get_str_array(b.get(), "key", nullptr)[0], "one");
}

TEST(AnArrayOfTexts, TellsAnEmptySlotFromAnEmptyText) {
  const BundlePtr b = makeBundle();
  const char *texts[] = {nullptr, ""};

  bundle_add_str_array(b.get(), "key", texts, 2);
  const char **held = bundle_get_str_array(b.get(), "key", nullptr);

  EXPECT_EQ(held[0], nullptr);
  EXPECT_STREQ(held[1], "");
}

TEST(AnArrayOfTexts, HasEmptySlotsWhenItIsAddedWithoutTexts) {
  const BundlePtr b = makeBundle();
  int length = 0;

  expectResult(bundle_add_str_array(b.get(), "key", nullptr, 3), BUNDLE_ERROR_NONE);
  const char **held = bundle_get_str_array(b.get(), "key", &length);

  ASSERT_EQ(length, 3);
  EXPECT_EQ(std::vector<const char *>(held, held + 3), std::vector<const char *>(3, nullptr));
}

TEST(AnArrayOfBytes, HasEmptySlotsAtFirst) {
  const BundlePtr b = makeBundle();
  void **slots = nullptr;
  unsigned int length = 0;
  unsigned int *sizes = nullptr;

  bundle_add_byte_array(b.get(), "key", 3);
  ASSERT_EQ(bundle_get_byte_array(b.get(), "key", &slots, &length, &sizes), BUNDLE_ERROR_NONE);

  ASSERT_EQ(length, 3U);
  EXPECT_EQ(std::vector<void *>(slots, slots + 3), std::vector<void *>(3, nullptr));
  EXPECT_EQ(std::vector<unsigned int>(sizes, sizes + 3), std::vector<unsigned int>(3, 0));
}

// A bundle with an array of bytes of two slots, "key", and a text, "text".
class AnElement : public testing::Test {
protected:
  AnElement() {
    bundle_add_byte_array(_b.get(), "key", 2);
    bundle_add_str(_b.get(), "text", "x");
  }

  int set(unsigned int index, const std::string &bytes) {
    return bundle_set_byte_array_element(_b.get(), "key", index, bytes.data(), bytes.size());
  }

  std::string get(unsigned int index) {
    void **slots = nullptr;
    unsigned int *sizes = nullptr;
    bundle_get_byte_array(_b.get(), "key", &slots, nullptr, &sizes);
    return slots[index] != nullptr ? std::string(static_cast<char *>(slots[index]), sizes[index])
                                   : "nothing";
  }

  const BundlePtr _b = makeBundle();
};

TEST_F(AnElement, FillsItsSlot) {
  expectResult(set(1, "abc"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(get(0), "nothing");
  EXPECT_EQ(get(1), "abc");
}

TEST_F(AnElement, ReplacesTheOneBefore) {
  set(0, "abc");

  expectResult(set(0, "a longer one than before"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(get(0), "a longer one than before");
}

TEST_F(AnElement, MayBeAPartOfTheOneItReplaces) {
  void **slots = nullptr;
  set(0, "abcdef");
  bundle_get_byte_array(_b.get(), "key", &slots, nullptr, nullptr);

  bundle_set_byte_array_element(_b.get(), "key", 0, static_cast<char *>(slots[0]) + 2, 3);

  EXPECT_EQ(get(0), "cde");
}

TEST_F(AnElement, HasTheSameSizeForBothGetters) {
  set(1, "abc");
  std::size_t *sizes = nullptr;
  bundle_foreach(
      _b.get(),
      [](const char *key, const int, const bundle_keyval_t *kv, void *data) {
        void **slots = nullptr;
        if (std::string(key) == "key") {
          bundle_keyval_get_array_val(const_cast<bundle_keyval_t *>(kv), &slots, nullptr,
                                      static_cast<std::size_t **>(data));
        }
      },
      &sizes);

  EXPECT_EQ(sizes[0], 0U);
  EXPECT_EQ(sizes[1], 3U);
}

TEST_F(AnElement, NeedsABundle) {
  expectResult(bundle_set_byte_array_element(nullptr, "key", 0, "x", 1),
               BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(AnElement, NeedsAKey) {
  expectResult(bundle_set_byte_array_element(_b.get(), nullptr, 0, "x", 1),
               BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(AnElement, NeedsBytes) {
  expectResult(bundle_set_byte_array_element(_b.get(), "key", 0, nullptr, 1),
               BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(AnElement, NeedsAtLeastOneByte) {
  set(0, "abc");

  expectResult(bundle_set_byte_array_element(_b.get(), "key", 0, "x", 0),
               BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(get(0), "abc");
}

TEST_F(AnElement, HasNoMoreBytesThanItsSizeCanTell) {
  set(0, "abc");

  expectResult(bundle_set_byte_array_element(_b.get(), "key", 0, "x", std::size_t{UINT_MAX} + 1),
               BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(get(0), "abc");
}

TEST_F(AnElement, NeedsASlotWithinTheArray) {
  expectResult(set(2, "x"), BUNDLE_ERROR_INVALID_PARAMETER);
  expectResult(set(UINT_MAX, "x"), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(AnElement, NeedsAKeyThatTheBundleHas) {
  expectResult(bundle_set_byte_array_element(_b.get(), "other", 0, "x", 1),
               BUNDLE_ERROR_KEY_NOT_AVAILABLE);
  expectResult(bundle_set_byte_array_element(_b.get(), "", 0, "x", 1),
               BUNDLE_ERROR_KEY_NOT_AVAILABLE);
}

TEST_F(AnElement, NeedsAnArrayOfBytes) {
  expectResult(bundle_set_byte_array_element(_b.get(), "text", 0, "x", 1),
               BUNDLE_ERROR_INVALID_PARAMETER);
}

} // namespace
