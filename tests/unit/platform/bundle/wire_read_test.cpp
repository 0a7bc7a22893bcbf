// SPDX-License-Identifier: Apache-2.0
#include "support/Wire.h"

#include <climits>
#include <functional>
#include <ostream>

namespace {

namespace wire = platform::bundle_wire;

const std::string kText("text\0", 5);

TEST(ReadingAWireForm, GivesTheBundle) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const Bytes bytes = wireOf(b.get());
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  const BundlePtr read = readWire(bytes);

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
  expectOneOfEach(read.get());
}

TEST(ReadingAWireForm, GivesAnEmptyBundle) {
  const BundlePtr read = readWire(Wire().number(0).bytes());

  ASSERT_NE(read, nullptr);
  EXPECT_EQ(bundle_get_count(read.get()), 0);
}

TEST(ReadingAWireForm, GivesABundleOfManyKeys) {
  const BundlePtr b = makeBundle();
  for (int i = 0; i < 10000; ++i) {
    bundle_add_str(b.get(), std::to_string(i).c_str(), "x");
  }

  const BundlePtr read = readWire(wireOf(b.get()));

  EXPECT_EQ(keysOf(read.get()), keysOf(b.get()));
}

TEST(ReadingAWireForm, DoesNotNeedItAligned) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const Bytes bytes = wireOf(b.get());

  for (std::size_t offset = 0; offset < 8; ++offset) {
    Bytes shifted(offset);
    shifted.insert(shifted.end(), bytes.begin(), bytes.end());
    const BundlePtr read(wire::read(shifted.data() + offset, bytes.size()));
    expectOneOfEach(read.get());
  }
}

TEST(ReadingAWireForm, NeedsBytes) {
  EXPECT_EQ(wire::read(nullptr, 0), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(wire::read(nullptr, 4), nullptr);
}

TEST(ReadingAWireForm, RefusesALengthThatNoneHas) {
  const Bytes bytes = Wire().number(0).bytes();

  EXPECT_EQ(wire::read(bytes.data(), wire::kMaxSize + 1), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(ReadingAWireForm, RefusesItCutAtAnyLength) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  const Bytes bytes = wireOf(b.get());

  for (auto end = bytes.begin(); end != bytes.end(); ++end) {
    EXPECT_EQ(readWire(Bytes(bytes.begin(), end)), nullptr) << end - bytes.begin();
    EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
  }
}

TEST(ReadingAWireForm, RefusesTrailingBytes) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  Bytes bytes = wireOf(b.get());

  bytes.push_back(0);

  EXPECT_EQ(readWire(bytes), nullptr);
}

// Each bundle has one wire form: what is read is written as the same bytes.
TEST(ReadingAWireForm, RefusesAnyChangedByteOrGivesWhatHasThatWireForm) {
  const BundlePtr b = makeBundle();
  addOneOfEach(b.get());
  Bytes bytes = wireOf(b.get());
  int accepted = 0;

  for (unsigned char &byte : bytes) {
    const unsigned char before = byte;
    for (int value = 0; value <= UCHAR_MAX; ++value) {
      byte = static_cast<unsigned char>(value);
      const BundlePtr read = readWire(bytes);
      if (read) {
        ++accepted;
        ASSERT_EQ(wireOf(read.get()), bytes);
      }
    }
    byte = before;
  }

  EXPECT_GT(accepted, 0);
}

struct Bad {
  const char *name;
  Bytes bytes;
};

void PrintTo(const Bad &row, std::ostream *out) {
  *out << row.name;
}

class ABadWireForm : public testing::TestWithParam<Bad> {};

TEST_P(ABadWireForm, IsRefused) {
  EXPECT_EQ(readWire(GetParam().bytes), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

std::string nameOf(const testing::TestParamInfo<Bad> &info) {
  return info.param.name;
}

Wire one() {
  return Wire().number(1);
}

INSTANTIATE_TEST_SUITE_P(
    Count, ABadWireForm,
    testing::Values(
        Bad{"BelowTheEntries", Wire().number(0).entry(0x401, "key", 5).raw(kText).bytes()},
        Bad{"AboveTheEntries", Wire().number(2).entry(0x401, "key", 5).raw(kText).bytes()},
        Bad{"AboveAllMemory", Wire().number(UINT32_MAX).entry(2, "k", 1).raw("x").bytes()},
        Bad{"WithoutEntries", Wire().number(1).bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Type, ABadWireForm,
    testing::Values(Bad{"Any", one().entry(0, "key", 5).raw(kText).bytes()},
                    Bad{"None", one().entry(UINT32_MAX, "key", 5).raw(kText).bytes()},
                    Bad{"WithoutMeasurable", one().entry(1, "key", 5).raw(kText).bytes()},
                    Bad{"Primitive", one().entry(0x601, "key", 5).raw(kText).bytes()},
                    Bad{"Unknown", one().entry(3, "key", 5).raw(kText).bytes()},
                    Bad{"ArrayOfUnknown", one().entry(0x100, "key", 1).number(0).bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Key, ABadWireForm,
    testing::Values(
        Bad{"Empty", one().entry(2, "", 1).raw("x").bytes()},
        Bad{"OfNoBytes", one().number(2).number(0).number(1).raw("xyz").bytes()},
        Bad{"WithoutNul", one().number(2).number(3).number(1).raw("keyx").bytes()},
        Bad{"WithAnInnerNul",
            one().number(2).number(4).number(1).raw(std::string("k\0y\0x", 5)).bytes()},
        Bad{"LongerThanTheMessage",
            one().number(2).number(100).number(1).raw(std::string("key\0x", 5)).bytes()},
        Bad{"LongerThanAllMemory",
            one().number(2).number(UINT32_MAX).number(1).raw(std::string("key\0x", 5)).bytes()},
        Bad{"Repeated",
            Wire().number(2).entry(2, "key", 1).raw("x").entry(2, "key", 1).raw("x").bytes()},
        Bad{"RepeatedForAnArray",
            Wire().number(2).entry(2, "key", 1).raw("x").entry(0x102, "key", 1).number(0).bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Text, ABadWireForm,
    testing::Values(
        Bad{"OfNoBytes", one().entry(0x401, "key", 0).bytes()},
        Bad{"WithoutNul", one().entry(0x401, "key", 4).raw("text").bytes()},
        Bad{"WithAnInnerNul", one().entry(0x401, "key", 4).raw(std::string("a\0b\0", 4)).bytes()},
        Bad{"WithTwoNuls", one().entry(0x401, "key", 3).raw(std::string("a\0\0", 3)).bytes()},
        Bad{"LongerThanTheMessage", one().entry(0x401, "key", 6).raw(kText).bytes()},
        Bad{"LongerThanAllMemory", one().entry(0x401, "key", UINT32_MAX).raw(kText).bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    TheBytes, ABadWireForm,
    testing::Values(Bad{"Missing", one().entry(2, "key", 0).bytes()},
                    Bad{"MoreThanTheMessage", one().entry(2, "key", 2).raw("x").bytes()},
                    Bad{"MoreThanAllMemory", one().entry(2, "key", UINT32_MAX).raw("x").bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Texts, ABadWireForm,
    testing::Values(
        Bad{"Missing", one().entry(0x501, "key", 0).bytes()},
        Bad{"MoreThanTheMessage", one().entry(0x501, "key", 2).number(0).bytes()},
        Bad{"MoreThanAllMemory", one().entry(0x501, "key", UINT32_MAX).number(0).bytes()},
        Bad{"MoreThanAnIntCounts", one().entry(0x501, "key", 0x80000000U).number(0).bytes()},
        Bad{"WithoutNul", one().entry(0x501, "key", 1).number(1).raw("x").bytes()},
        Bad{"WithAnInnerNul",
            one().entry(0x501, "key", 1).number(3).raw(std::string("\0a\0", 3)).bytes()},
        Bad{"LongerThanTheMessage",
            one().entry(0x501, "key", 1).number(9).raw(std::string("a\0", 2)).bytes()},
        Bad{"WithASlotCutOff",
            one().entry(0x501, "key", 2).number(4).raw(std::string("abc\0", 4)).bytes()}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Parts, ABadWireForm,
    testing::Values(
        Bad{"Missing", one().entry(0x102, "key", 0).bytes()},
        Bad{"MoreThanTheMessage", one().entry(0x102, "key", 2).number(0).bytes()},
        Bad{"MoreThanAllMemory", one().entry(0x102, "key", UINT32_MAX).number(0).bytes()},
        Bad{"LongerThanTheMessage", one().entry(0x102, "key", 1).number(2).raw("a").bytes()},
        Bad{"LongerThanAllMemory",
            one().entry(0x102, "key", 1).number(UINT32_MAX).raw("a").bytes()},
        Bad{"WithASlotCutOff", one().entry(0x102, "key", 2).number(4).raw("abcd").bytes()}),
    nameOf);

} // namespace
