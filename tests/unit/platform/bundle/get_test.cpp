// SPDX-License-Identifier: Apache-2.0
#include "support/Bundles.h"

#include <ostream>

namespace {

// The arguments of a getter: a bundle with one value of each type, or null, and a key.
struct Asked {
  const char *name;
  bool withBundle;
  const char *key;
  int result;
};

void PrintTo(const Asked &row, std::ostream *out) {
  *out << row.name;
}

std::string nameOf(const testing::TestParamInfo<Asked> &info) {
  return info.param.name;
}

// A bundle with one value of each type, and outputs that are not null.
class GetterTest : public testing::TestWithParam<Asked> {
protected:
  GetterTest() { addOneOfEach(_b.get()); }

  bundle *asked() const { return GetParam().withBundle ? _b.get() : nullptr; }

  char _something[1] = {};
  void *_slot = _something;
  unsigned int _size = 7;
  const BundlePtr _b = makeBundle();
};

class GettingNoText : public GetterTest {};
class GettingNoBytes : public GetterTest {};
class GettingNoTexts : public GetterTest {};
class GettingNoParts : public GetterTest {};

TEST_P(GettingNoText, SetsItToNull) {
  char *text = _something;

  const int result = bundle_get_str(asked(), GetParam().key, &text);

  expectResult(result, GetParam().result);
  EXPECT_EQ(text, nullptr);
}

TEST_P(GettingNoText, GivesNoVal) {
  EXPECT_EQ(bundle_get_val(asked(), GetParam().key), nullptr);
  EXPECT_EQ(get_last_result(), GetParam().result);
}

TEST_P(GettingNoBytes, SetsThemToNullAndTheirSizeToZero) {
  void *bytes = _something;
  std::size_t size = 7;

  const int result = bundle_get_byte(asked(), GetParam().key, &bytes, &size);

  expectResult(result, GetParam().result);
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(size, 0U);
}

TEST_P(GettingNoTexts, GivesNullAndSetsTheLengthToZero) {
  int length = 7;

  const char **texts = bundle_get_str_array(asked(), GetParam().key, &length);

  EXPECT_EQ(texts, nullptr);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(get_last_result(), GetParam().result);
}

TEST_P(GettingNoParts, SetsThemToNullAndTheirNumberToZero) {
  void **slots = &_slot;
  unsigned int length = 7;
  unsigned int *sizes = &_size;

  const int result = bundle_get_byte_array(asked(), GetParam().key, &slots, &length, &sizes);

  expectResult(result, GetParam().result);
  EXPECT_EQ(slots, nullptr);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(sizes, nullptr);
}

const Asked kNoBundle{"WithoutABundle", false, "text", BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kNoKey{"WithoutAKey", true, nullptr, BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kNeither{"WithoutBoth", false, nullptr, BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kEmpty{"OfAnEmptyKey", true, "", BUNDLE_ERROR_KEY_NOT_AVAILABLE};
const Asked kUnknown{"OfAnUnknownKey", true, "other", BUNDLE_ERROR_KEY_NOT_AVAILABLE};
const Asked kLonger{"OfALongerKey", true, "text2", BUNDLE_ERROR_KEY_NOT_AVAILABLE};
const Asked kText{"OfAText", true, "text", BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kBytes{"OfBytes", true, "bytes", BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kTexts{"OfTexts", true, "texts", BUNDLE_ERROR_INVALID_PARAMETER};
const Asked kParts{"OfParts", true, "parts", BUNDLE_ERROR_INVALID_PARAMETER};

INSTANTIATE_TEST_SUITE_P(Of, GettingNoText,
                         testing::Values(kNoBundle, kNoKey, kNeither, kEmpty, kUnknown, kLonger,
                                         kBytes, kTexts, kParts),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Of, GettingNoBytes,
                         testing::Values(kNoBundle, kNoKey, kNeither, kEmpty, kUnknown, kLonger,
                                         kText, kTexts, kParts),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Of, GettingNoTexts,
                         testing::Values(kNoBundle, kNoKey, kNeither, kEmpty, kUnknown, kLonger,
                                         kText, kBytes, kParts),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Of, GettingNoParts,
                         testing::Values(kNoBundle, kNoKey, kNeither, kEmpty, kUnknown, kLonger,
                                         kText, kBytes, kTexts),
                         nameOf);

// A bundle with one value of each type.
class ABundle : public testing::Test {
protected:
  ABundle() { addOneOfEach(_b.get()); }

  const BundlePtr _b = makeBundle();
};

TEST_F(ABundle, GivesWhatWasPutIn) {
  expectOneOfEach(_b.get());
}

TEST_F(ABundle, SetsTheLastResultWhenItGivesAValue) {
  char *text = nullptr;
  void *bytes = nullptr;
  void **slots = nullptr;
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  expectResult(bundle_get_str(_b.get(), "text", &text), BUNDLE_ERROR_NONE);
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);
  expectResult(bundle_get_byte(_b.get(), "bytes", &bytes, nullptr), BUNDLE_ERROR_NONE);
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);
  expectResult(bundle_get_byte_array(_b.get(), "parts", &slots, nullptr, nullptr),
               BUNDLE_ERROR_NONE);
}

TEST_F(ABundle, SetsTheLastResultWhenItGivesNoResult) {
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);
  EXPECT_NE(bundle_get_str_array(_b.get(), "texts", nullptr), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);

  set_last_result(BUNDLE_ERROR_KEY_EXISTS);
  EXPECT_NE(bundle_get_val(_b.get(), "text"), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);

  set_last_result(BUNDLE_ERROR_KEY_EXISTS);
  EXPECT_EQ(bundle_get_count(_b.get()), 5);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
}

TEST_F(ABundle, NeedsSomewhereToPutAText) {
  expectResult(bundle_get_str(_b.get(), "text", nullptr), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(ABundle, NeedsSomewhereToPutBytes) {
  std::size_t size = 7;

  const int result = bundle_get_byte(_b.get(), "bytes", nullptr, &size);

  expectResult(result, BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(size, 0U);
}

TEST_F(ABundle, NeedsSomewhereToPutParts) {
  unsigned int length = 7;
  unsigned int *sizes = &length;

  const int result = bundle_get_byte_array(_b.get(), "parts", nullptr, &length, &sizes);

  expectResult(result, BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(sizes, nullptr);
}

TEST_F(ABundle, GivesBytesWithoutTheirSize) {
  void *bytes = nullptr;

  bundle_get_byte(_b.get(), "bytes", &bytes, nullptr);

  EXPECT_EQ(std::string(static_cast<char *>(bytes), 3), std::string("\0\1\2", 3));
}

TEST_F(ABundle, KnowsTheTypeOfEachKey) {
  EXPECT_EQ(bundle_get_type(_b.get(), "text"), 0x401);
  EXPECT_EQ(bundle_get_type(_b.get(), "texts"), 0x501);
  EXPECT_EQ(bundle_get_type(_b.get(), "bytes"), 2);
  EXPECT_EQ(bundle_get_type(_b.get(), "parts"), 0x102);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
}

TEST_F(ABundle, HasNoTypeForAKeyItDoesNotHave) {
  EXPECT_EQ(bundle_get_type(_b.get(), "other"), BUNDLE_TYPE_NONE);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
  EXPECT_EQ(bundle_get_type(_b.get(), ""), BUNDLE_TYPE_NONE);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_KEY_NOT_AVAILABLE);
}

TEST_F(ABundle, HasNoTypeForNull) {
  EXPECT_EQ(bundle_get_type(_b.get(), nullptr), BUNDLE_TYPE_NONE);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(bundle_get_type(nullptr, "text"), BUNDLE_TYPE_NONE);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(NoBundle, HasNoKeys) {
  EXPECT_EQ(bundle_get_count(nullptr), 0);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

} // namespace
