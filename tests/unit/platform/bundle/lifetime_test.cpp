// SPDX-License-Identifier: Apache-2.0
//
// Creating, copying, deleting from and freeing a bundle.
#include "support/Bundles.h"

namespace {

TEST(ANewBundle, IsEmpty) {
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  const BundlePtr b = makeBundle();

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST(Freeing, Succeeds) {
  bundle *b = bundle_create();
  addOneOfEach(b);

  expectResult(bundle_free(b), BUNDLE_ERROR_NONE);
}

// The memory of a large value is used again.
TEST(ALargeValue, IsWholeWhereAnotherOneWasBefore) {
  const std::string before(100000, 'b');
  const std::string text(80000, 't');
  BundlePtr first = makeBundle();
  bundle_add_str(first.get(), "key", before.c_str());
  first.reset();
  const BundlePtr second = makeBundle();
  char *found = nullptr;

  expectResult(bundle_add_str(second.get(), "key", text.c_str()), BUNDLE_ERROR_NONE);

  bundle_get_str(second.get(), "key", &found);
  EXPECT_EQ(found, text);
}

TEST(ALargeValue, StaysWhenAnotherOfItsSizeIsDeletedAndAdded) {
  const std::string text(80000, 't');
  const std::string other(80000, 'o');
  const BundlePtr b = makeBundle();
  bundle_add_str(b.get(), "kept", text.c_str());
  bundle_add_str(b.get(), "deleted", other.c_str());
  char *found = nullptr;

  bundle_del(b.get(), "deleted");
  bundle_add_str(b.get(), "added", other.c_str());

  bundle_get_str(b.get(), "kept", &found);
  EXPECT_EQ(found, text);
}

TEST(Freeing, NeedsABundle) {
  expectResult(bundle_free(nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(ACopy, HoldsWhatTheBundleHolds) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  const BundlePtr copy(bundle_dup(b.get()));

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
  expectOneOfEach(copy.get());
}

TEST(ACopy, OutlivesTheBundle) {
  BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const BundlePtr copy(bundle_dup(b.get()));

  b.reset();

  expectOneOfEach(copy.get());
}

TEST(ACopy, SharesNoMemoryWithTheBundle) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const BundlePtr copy(bundle_dup(b.get()));
  char *text = nullptr;
  void **parts = nullptr;

  bundle_get_str(b.get(), "text", &text);
  text[0] = 'X';
  bundle_get_byte_array(b.get(), "parts", &parts, nullptr, nullptr);
  static_cast<char *>(parts[1])[0] = 'X';
  bundle_add_str(b.get(), "more", "x");
  bundle_del(b.get(), "bytes");

  expectOneOfEach(copy.get());
}

TEST(ACopy, OfAnEmptyBundleIsEmpty) {
  const BundlePtr b = makeBundle();

  const BundlePtr copy(bundle_dup(b.get()));

  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(bundle_get_count(copy.get()), 0);
}

TEST(ACopy, NeedsABundle) {
  EXPECT_EQ(bundle_dup(nullptr), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

// A bundle with the keys a, b and c.
class Deleting : public testing::Test {
protected:
  Deleting() {
    for (const char *key : {"a", "b", "c"}) {
      bundle_add_str(_b.get(), key, key);
    }
  }

  const BundlePtr _b = makeBundle();
};

TEST_F(Deleting, TakesTheFirstKeyAway) {
  expectResult(bundle_del(_b.get(), "a"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(keysOf(_b.get()), (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(bundle_get_count(_b.get()), 2);
}

TEST_F(Deleting, TakesAKeyInTheMiddleAway) {
  expectResult(bundle_del(_b.get(), "b"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(keysOf(_b.get()), (std::vector<std::string>{"a", "c"}));
  EXPECT_STREQ(bundle_get_val(_b.get(), "a"), "a");
  EXPECT_STREQ(bundle_get_val(_b.get(), "c"), "c");
}

TEST_F(Deleting, TakesTheLastKeyAway) {
  expectResult(bundle_del(_b.get(), "c"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(keysOf(_b.get()), (std::vector<std::string>{"a", "b"}));
}

TEST_F(Deleting, TakesAllKeysAway) {
  for (const char *key : {"b", "a", "c"}) {
    bundle_del(_b.get(), key);
  }

  EXPECT_EQ(bundle_get_count(_b.get()), 0);
  EXPECT_TRUE(keysOf(_b.get()).empty());
}

TEST_F(Deleting, LetsAKeyComeBackAtTheEnd) {
  bundle_del(_b.get(), "a");

  expectResult(bundle_add_str(_b.get(), "a", "new"), BUNDLE_ERROR_NONE);

  EXPECT_EQ(keysOf(_b.get()), (std::vector<std::string>{"b", "c", "a"}));
  EXPECT_STREQ(bundle_get_val(_b.get(), "a"), "new");
}

TEST_F(Deleting, NeedsAKeyThatTheBundleHas) {
  expectResult(bundle_del(_b.get(), "other"), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
  expectResult(bundle_del(_b.get(), ""), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
  EXPECT_EQ(bundle_get_count(_b.get()), 3);
}

TEST_F(Deleting, NeedsABundleAndAKey) {
  expectResult(bundle_del(nullptr, "a"), BUNDLE_ERROR_INVALID_PARAMETER);
  expectResult(bundle_del(_b.get(), nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_count(_b.get()), 3);
}

TEST_F(Deleting, WorksForEachType) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());

  for (const std::string &key : keysOf(b.get())) {
    expectResult(bundle_del(b.get(), key.c_str()), BUNDLE_ERROR_NONE);
  }

  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST_F(Deleting, AndAddingTimeAndAgainLeavesTheOthersAlone) {
  for (int i = 0; i < 1000; ++i) {
    const std::string text(static_cast<std::size_t>(i), 'x');
    bundle_del(_b.get(), "b");
    bundle_add_str(_b.get(), "b", text.c_str());
    ASSERT_EQ(bundle_get_val(_b.get(), "b"), text);
  }

  EXPECT_EQ(keysOf(_b.get()), (std::vector<std::string>{"a", "c", "b"}));
  EXPECT_STREQ(bundle_get_val(_b.get(), "a"), "a");
  EXPECT_STREQ(bundle_get_val(_b.get(), "c"), "c");
}

} // namespace
