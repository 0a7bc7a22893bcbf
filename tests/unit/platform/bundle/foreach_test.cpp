// SPDX-License-Identifier: Apache-2.0
//
// bundle_foreach() and the bundle_keyval_ functions.
#include "support/Bundles.h"

#include <functional>
#include <stdexcept>

namespace {

using Visit = std::function<void(const char *key, int type, bundle_keyval_t *kv)>;

void visitWith(const char *key, const int type, const bundle_keyval_t *kv, void *data) {
  (*static_cast<Visit *>(data))(key, type, const_cast<bundle_keyval_t *>(kv));
}

void forEach(bundle *b, Visit visit) {
  bundle_foreach(b, visitWith, &visit);
}

// A bundle with one value of each type.
class ForEach : public testing::Test {
protected:
  ForEach() { addOneOfEach(_b.get()); }

  // Calls a function with the value of one key.
  void withValue(const std::string &wanted, const std::function<void(bundle_keyval_t *)> &use) {
    int uses = 0;
    forEach(_b.get(), [&](const char *key, int, bundle_keyval_t *kv) {
      if (key == wanted) {
        use(kv);
        ++uses;
      }
    });
    EXPECT_EQ(uses, 1);
  }

  const BundlePtr _b = makeBundle();
};

TEST_F(ForEach, ShowsTheKeysInTheOrderInWhichTheyWereAdded) {
  EXPECT_EQ(keysOf(_b.get()),
            (std::vector<std::string>{"text", "empty", "bytes", "texts", "parts"}));
}

TEST_F(ForEach, ShowsTheTypes) {
  std::vector<int> types;

  forEach(_b.get(), [&](const char *, int type, bundle_keyval_t *) { types.push_back(type); });

  EXPECT_EQ(types, (std::vector<int>{BUNDLE_TYPE_STR, BUNDLE_TYPE_STR, BUNDLE_TYPE_BYTE,
                                     BUNDLE_TYPE_STR_ARRAY, BUNDLE_TYPE_BYTE_ARRAY}));
}

TEST_F(ForEach, SetsTheLastResult) {
  forEach(_b.get(),
          [](const char *, int, bundle_keyval_t *) { set_last_result(BUNDLE_ERROR_KEY_EXISTS); });

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
}

TEST_F(ForEach, CallsNothingForAnEmptyBundle) {
  const BundlePtr b = makeBundle();

  forEach(b.get(), [](const char *, int, bundle_keyval_t *) { FAIL(); });

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
}

TEST_F(ForEach, NeedsABundle) {
  forEach(nullptr, [](const char *, int, bundle_keyval_t *) { FAIL(); });

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(ForEach, NeedsAnIterator) {
  bundle_foreach(_b.get(), nullptr, nullptr);

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(ForEach, LetsTheIteratorReadTheBundle) {
  int found = 0;

  forEach(_b.get(), [&](const char *key, int type, bundle_keyval_t *) {
    found += bundle_get_type(_b.get(), key) == type ? 1 : 0;
  });

  EXPECT_EQ(found, 5);
}

TEST_F(ForEach, LetsTheIteratorDeleteTheKeyItIsCalledWith) {
  std::vector<std::string> seen;

  forEach(_b.get(), [&](const char *key, int, bundle_keyval_t *) {
    seen.emplace_back(key);
    bundle_del(_b.get(), key);
  });

  EXPECT_EQ(seen.size(), 5U);
  EXPECT_EQ(bundle_get_count(_b.get()), 0);
}

TEST_F(ForEach, LetsAnExceptionOfTheIteratorPass) {
  int calls = 0;
  const auto fail = [&calls](const char *, int, bundle_keyval_t *) {
    ++calls;
    throw std::runtime_error("enough");
  };

  EXPECT_THROW(forEach(_b.get(), fail), std::runtime_error);

  EXPECT_EQ(calls, 1);
  expectOneOfEach(_b.get());
}

TEST_F(ForEach, GivesTheTypeOfAValue) {
  forEach(_b.get(), [](const char *, int type, bundle_keyval_t *kv) {
    EXPECT_EQ(bundle_keyval_get_type(kv), type);
    EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
  });
}

TEST_F(ForEach, TellsArraysFromOtherValues) {
  std::vector<int> areArrays;

  forEach(_b.get(), [&](const char *, int, bundle_keyval_t *kv) {
    areArrays.push_back(bundle_keyval_type_is_array(kv));
  });

  EXPECT_EQ(areArrays, (std::vector<int>{0, 0, 0, 1, 1}));
}

TEST_F(ForEach, GivesATextWithASizeThatCountsItsNul) {
  withValue("text", [](bundle_keyval_t *kv) {
    void *value = nullptr;
    std::size_t size = 0;

    expectResult(bundle_keyval_get_basic_val(kv, &value, &size), BUNDLE_ERROR_NONE);

    EXPECT_STREQ(static_cast<char *>(value), "xyz");
    EXPECT_EQ(size, 4U);
  });
}

TEST_F(ForEach, GivesBytesWithTheirSize) {
  withValue("bytes", [](bundle_keyval_t *kv) {
    void *value = nullptr;
    std::size_t size = 0;

    expectResult(bundle_keyval_get_basic_val(kv, &value, &size), BUNDLE_ERROR_NONE);

    EXPECT_EQ(std::string(static_cast<char *>(value), size), std::string("\0\1\2", 3));
  });
}

TEST_F(ForEach, GivesTheBundlesOwnMemory) {
  withValue("text", [this](bundle_keyval_t *kv) {
    void *value = nullptr;

    bundle_keyval_get_basic_val(kv, &value, nullptr);

    EXPECT_EQ(value, bundle_get_val(_b.get(), "text"));
  });
}

TEST_F(ForEach, GivesTextsWithSizesThatCountTheirNul) {
  withValue("texts", [](bundle_keyval_t *kv) {
    void **slots = nullptr;
    unsigned int length = 0;
    std::size_t *sizes = nullptr;

    expectResult(bundle_keyval_get_array_val(kv, &slots, &length, &sizes), BUNDLE_ERROR_NONE);

    ASSERT_EQ(length, 3U);
    EXPECT_STREQ(static_cast<char *>(slots[0]), "one");
    EXPECT_EQ(slots[1], nullptr);
    EXPECT_EQ(std::vector<std::size_t>(sizes, sizes + 3), (std::vector<std::size_t>{4, 0, 1}));
  });
}

TEST_F(ForEach, GivesPartsWithTheirSizes) {
  withValue("parts", [](bundle_keyval_t *kv) {
    void **slots = nullptr;
    unsigned int length = 0;
    std::size_t *sizes = nullptr;

    expectResult(bundle_keyval_get_array_val(kv, &slots, &length, &sizes), BUNDLE_ERROR_NONE);

    ASSERT_EQ(length, 3U);
    EXPECT_EQ(slots[0], nullptr);
    EXPECT_EQ(std::string(static_cast<char *>(slots[1]), sizes[1]), "ab");
    EXPECT_EQ(std::vector<std::size_t>(sizes, sizes + 3), (std::vector<std::size_t>{0, 2, 1}));
  });
}

TEST_F(ForEach, GivesNoBasicValueOfAnArray) {
  withValue("texts", [](bundle_keyval_t *kv) {
    void *value = kv;
    std::size_t size = 7;

    expectResult(bundle_keyval_get_basic_val(kv, &value, &size), BUNDLE_ERROR_INVALID_PARAMETER);

    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(size, 0U);
  });
}

TEST_F(ForEach, GivesNoArrayOfABasicValue) {
  withValue("text", [](bundle_keyval_t *kv) {
    void *slot = nullptr;
    void **slots = &slot;
    unsigned int length = 7;
    std::size_t size = 7;
    std::size_t *sizes = &size;

    expectResult(bundle_keyval_get_array_val(kv, &slots, &length, &sizes),
                 BUNDLE_ERROR_INVALID_PARAMETER);

    EXPECT_EQ(slots, nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(sizes, nullptr);
  });
}

TEST_F(ForEach, GivesAnArrayWithoutItsLengthAndSizes) {
  withValue("texts", [](bundle_keyval_t *kv) {
    void **slots = nullptr;

    expectResult(bundle_keyval_get_array_val(kv, &slots, nullptr, nullptr), BUNDLE_ERROR_NONE);

    EXPECT_STREQ(static_cast<char *>(slots[0]), "one");
  });
}

TEST_F(ForEach, NeedsSomewhereToPutAValue) {
  withValue("text", [](bundle_keyval_t *kv) {
    std::size_t size = 7;
    expectResult(bundle_keyval_get_basic_val(kv, nullptr, &size), BUNDLE_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(size, 0U);
  });
  withValue("texts", [](bundle_keyval_t *kv) {
    unsigned int length = 7;
    expectResult(bundle_keyval_get_array_val(kv, nullptr, &length, nullptr),
                 BUNDLE_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(length, 0U);
  });
}

TEST(NoValue, HasNoType) {
  EXPECT_EQ(bundle_keyval_get_type(nullptr), -1);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(NoValue, IsNeitherAnArrayNorNone) {
  EXPECT_EQ(bundle_keyval_type_is_array(nullptr), -1);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(NoValue, CannotBeGot) {
  void *value = nullptr;
  void **slots = nullptr;

  expectResult(bundle_keyval_get_basic_val(nullptr, &value, nullptr),
               BUNDLE_ERROR_INVALID_PARAMETER);
  expectResult(bundle_keyval_get_array_val(nullptr, &slots, nullptr, nullptr),
               BUNDLE_ERROR_INVALID_PARAMETER);
}

} // namespace
