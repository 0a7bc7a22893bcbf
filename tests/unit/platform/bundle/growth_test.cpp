// SPDX-License-Identifier: Apache-2.0
//
// Bundles from one key, which lie in one piece of memory, to many, which are looked up in an index.
#include "support/Bundles.h"

namespace {

std::string keyOf(int i) {
  return "key" + std::to_string(i);
}

BundlePtr bundleOf(int count) {
  BundlePtr b = makeBundle();
  for (int i = 0; i < count; ++i) {
    bundle_add_str(b.get(), keyOf(i).c_str(), std::to_string(i).c_str());
  }
  return b;
}

// Numbers of keys, around those at which a bundle changes how it stores them.
class AGrowingBundle : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(OfKeys, AGrowingBundle,
                         testing::Values(0, 1, 2, 5, 10, 15, 31, 32, 33, 34, 100));

TEST_P(AGrowingBundle, FindsEachKey) {
  const BundlePtr b = bundleOf(GetParam());

  for (int i = 0; i < GetParam(); ++i) {
    EXPECT_STREQ(bundle_get_val(b.get(), keyOf(i).c_str()), std::to_string(i).c_str());
  }
  EXPECT_EQ(bundle_get_count(b.get()), GetParam());
}

TEST_P(AGrowingBundle, DoesNotFindOtherKeys) {
  const BundlePtr b = bundleOf(GetParam());

  EXPECT_EQ(bundle_get_val(b.get(), keyOf(GetParam()).c_str()), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
}

TEST_P(AGrowingBundle, RefusesEachKeyASecondTime) {
  const BundlePtr b = bundleOf(GetParam());

  for (int i = 0; i < GetParam(); ++i) {
    EXPECT_EQ(bundle_add_str(b.get(), keyOf(i).c_str(), "x"), BUNDLE_ERROR_KEY_EXISTS);
  }
}

TEST_P(AGrowingBundle, KeepsTheOrder) {
  const BundlePtr b = bundleOf(GetParam());
  std::vector<std::string> expected;
  for (int i = 0; i < GetParam(); ++i) {
    expected.push_back(keyOf(i));
  }

  EXPECT_EQ(keysOf(b.get()), expected);
}

TEST_P(AGrowingBundle, CanBeCopied) {
  const BundlePtr b = bundleOf(GetParam());

  const BundlePtr copy(bundle_dup(b.get()));

  EXPECT_EQ(keysOf(copy.get()), keysOf(b.get()));
  for (int i = 0; i < GetParam(); ++i) {
    EXPECT_STREQ(bundle_get_val(copy.get(), keyOf(i).c_str()), std::to_string(i).c_str());
  }
}

TEST_P(AGrowingBundle, CanShrinkToNothingAndGrowAgain) {
  const BundlePtr b = bundleOf(GetParam());

  for (int i = 0; i < GetParam(); ++i) {
    EXPECT_EQ(bundle_del(b.get(), keyOf(i).c_str()), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_del(b.get(), keyOf(i).c_str()), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
  }
  for (int i = 0; i < GetParam(); ++i) {
    EXPECT_EQ(bundle_add_str(b.get(), keyOf(i).c_str(), "again"), BUNDLE_ERROR_NONE);
    EXPECT_STREQ(bundle_get_val(b.get(), keyOf(i).c_str()), "again");
  }

  EXPECT_EQ(bundle_get_count(b.get()), GetParam());
}

// Sizes around that of the room inside a bundle.
TEST(AValue, OfAnySizeIsKept) {
  for (std::size_t size = 1; size < 1200; ++size) {
    const BundlePtr b = makeBundle();
    const std::string value(size, 'x');

    bundle_add_byte(b.get(), "before", "x", 1);
    bundle_add_byte(b.get(), "key", value.data(), size);
    bundle_add_byte(b.get(), "behind", "y", 1);

    void *bytes = nullptr;
    std::size_t kept = 0;
    ASSERT_EQ(bundle_get_byte(b.get(), "key", &bytes, &kept), BUNDLE_ERROR_NONE);
    ASSERT_EQ(std::string(static_cast<char *>(bytes), kept), value);
  }
}

TEST(AKey, OfAnyLengthIsFound) {
  for (std::size_t length = 1; length < 700; ++length) {
    const BundlePtr b = makeBundle();
    const std::string key(length, 'k');

    bundle_add_str(b.get(), key.c_str(), "text");

    ASSERT_STREQ(bundle_get_val(b.get(), key.c_str()), "text");
    ASSERT_EQ(keysOf(b.get()), std::vector<std::string>{key});
  }
}

} // namespace
