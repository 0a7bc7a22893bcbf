// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include <bundle.h>

#include <cstring>

namespace {

using fake::EntriesAre;
using fake::library;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;

class AFakeBundle : public fake::NothingLeft {
protected:
  ~AFakeBundle() override {
    library([this] { return bundle_free(_bundle); });
  }

  bundle *_bundle = library([] { return bundle_create(); });
};

TEST_F(AFakeBundle, KeepsItsEntriesInTheOrderOfInsertion) {
  const uint64_t number = 42;

  bundle_add_str(_bundle, "z", "first");
  bundle_add_byte(_bundle, "a", &number, sizeof number);

  EXPECT_THAT(fake::contentsOf(_bundle), EntriesAre({fake::text("z", "first"), fake::id("a", 42)}));
}

TEST_F(AFakeBundle, KeepsTheFirstValueOfAKey) {
  EXPECT_EQ(bundle_add_str(_bundle, "key", "first"), BUNDLE_ERROR_NONE);
  EXPECT_EQ(bundle_add_str(_bundle, "key", "second"), BUNDLE_ERROR_KEY_EXISTS);

  EXPECT_THAT(fake::contentsOf(_bundle), EntriesAre({fake::text("key", "first")}));
}

TEST_F(AFakeBundle, RefusesNullAndEmptyArguments) {
  EXPECT_EQ(bundle_add_str(_bundle, nullptr, "x"), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_add_str(_bundle, "", "x"), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_add_str(_bundle, "key", nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_add_byte(_bundle, "key", "x", 0), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_add_str(nullptr, "key", "x"), BUNDLE_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(fake::contentsOf(_bundle), IsEmpty());
}

TEST_F(AFakeBundle, GivesItsValuesByKeyAndType) {
  char *text = nullptr;
  void *raw = nullptr;
  size_t size = 0;
  bundle_add_str(_bundle, "text", "value");
  bundle_add_byte(_bundle, "raw", "ab", 2);

  EXPECT_EQ(bundle_get_str(_bundle, "text", &text), BUNDLE_ERROR_NONE);
  EXPECT_STREQ(text, "value");
  EXPECT_EQ(bundle_get_byte(_bundle, "raw", &raw, &size), BUNDLE_ERROR_NONE);
  EXPECT_EQ(size, 2U);
  EXPECT_EQ(bundle_get_str(_bundle, "raw", &text), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(bundle_get_str(_bundle, "none", &text), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
}

TEST_F(AFakeBundle, HasEightReadableBytesPerValue) {
  void *raw = nullptr;
  uint64_t number = 1;

  bundle_add_byte(_bundle, "raw", "\x07", 1);
  bundle_get_byte(_bundle, "raw", &raw, nullptr);
  std::memcpy(&number, raw, sizeof number);

  EXPECT_EQ(number, 7U);
}

TEST_F(AFakeBundle, IsCopiedDeeply) {
  bundle_add_str(_bundle, "key", "value");

  bundle *copy = bundle_dup(_bundle);
  bundle_add_str(_bundle, "later", "value");

  EXPECT_THAT(fake::contentsOf(copy), EntriesAre({fake::text("key", "value")}));
  bundle_free(copy);
}

TEST_F(AFakeBundle, ShowsEachEntryToAnIterator) {
  bundle *mixed = platform().bundles.create(
      {fake::text("t", "x"), fake::texts("ts", {"x", "y"}), fake::bytes("b", "xyz")});
  std::vector<std::string> seen;

  bundle_foreach(
      mixed,
      [](const char *key, int type, const bundle_keyval_t *keyval, void *data) {
        auto *entry = const_cast<bundle_keyval_t *>(keyval);
        EXPECT_EQ(bundle_keyval_get_type(entry), type);
        static_cast<std::vector<std::string> *>(data)->push_back(
            std::string(key) + (bundle_keyval_type_is_array(entry) == 1 ? "[]" : ""));
      },
      &seen);

  EXPECT_THAT(seen, TextsAre({"t", "ts[]", "b"}));
  bundle_free(mixed);
}

TEST_F(AFakeBundle, IsInTheJournalWithEveryCallOfTheLibrary) {
  library([this] { return bundle_add_str(_bundle, "key", "value"); });

  EXPECT_THAT(platform().journal.of({"bundle_create", "bundle_add_str"}),
              TextsAre({"bundle_create()", "bundle_add_str(bundle 1, key, value)"}));
}

TEST_F(AFakeBundle, CannotBeMadeWhenTheCallIsToFail) {
  platform().faults.fail("bundle_create", 2);

  bundle *first = library([] { return bundle_create(); });
  bundle *second = library([] { return bundle_create(); });
  bundle *third = library([] { return bundle_create(); });

  EXPECT_NE(first, nullptr);
  EXPECT_EQ(second, nullptr);
  EXPECT_NE(third, nullptr);
  bundle_free(first);
  bundle_free(third);
}

TEST_F(AFakeBundle, IsMisusedAfterItWasFreed) {
  bundle *freed = bundle_create();
  bundle_free(freed);

  bundle_add_str(freed, "key", "value");
  bundle_free(freed);

  EXPECT_THAT(platform().misuses, TextsAre({"bundle_add_str with a bundle that is not alive",
                                            "bundle_free with a bundle that is not alive"}));
  platform().misuses.clear();
}

} // namespace
