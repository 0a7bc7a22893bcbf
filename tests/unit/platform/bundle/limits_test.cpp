// SPDX-License-Identifier: Apache-2.0
//
// How much a bundle holds, in memory and as bytes.
#include "support/Wire.h"

#include <climits>

namespace {

using platform::bundles::kMaxKeyBytes;
using platform::bundles::kMaxKeys;
using platform::bundles::kMaxSlots;

constexpr int kMany = static_cast<int>(kMaxKeys);

std::string keyOf(int i) {
  return "key" + std::to_string(i);
}

// A bundle with as many keys as one holds.
class AFullBundle : public testing::Test {
protected:
  AFullBundle() {
    for (int i = 0; i < kMany; ++i) {
      bundle_add_str(_b.get(), keyOf(i).c_str(), std::to_string(i).c_str());
    }
  }

  const BundlePtr _b = makeBundle();
};

TEST_F(AFullBundle, FindsEachKey) {
  for (int i = 0; i < kMany; ++i) {
    ASSERT_STREQ(bundle_get_val(_b.get(), keyOf(i).c_str()), std::to_string(i).c_str());
  }
}

TEST_F(AFullBundle, RefusesOneMoreKeyOfEachType) {
  const char *texts[] = {"x"};

  expectResult(bundle_add_str(_b.get(), "more", "x"), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_byte(_b.get(), "more", "x", 1), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_str_array(_b.get(), "more", texts, 1), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_byte_array(_b.get(), "more", 1), BUNDLE_ERROR_OUT_OF_MEMORY);

  EXPECT_EQ(bundle_get_count(_b.get()), kMany);
}

TEST_F(AFullBundle, StillTellsThatAKeyExists) {
  expectResult(bundle_add_str(_b.get(), "key0", "x"), BUNDLE_ERROR_KEY_EXISTS);
}

TEST_F(AFullBundle, TakesAnotherKeyInThePlaceOfADeletedOne) {
  bundle_del(_b.get(), "key7");

  expectResult(bundle_add_str(_b.get(), "more", "x"), BUNDLE_ERROR_NONE);
  expectResult(bundle_add_str(_b.get(), "key7", "x"), BUNDLE_ERROR_OUT_OF_MEMORY);
}

TEST_F(AFullBundle, CanBeCopied) {
  const BundlePtr copy(bundle_dup(_b.get()));

  EXPECT_EQ(keysOf(copy.get()), keysOf(_b.get()));
}

TEST_F(AFullBundle, CanBeWrittenAndRead) {
  const BundlePtr read = readWire(wireOf(_b.get()));

  EXPECT_EQ(keysOf(read.get()), keysOf(_b.get()));
}

TEST_F(AFullBundle, CanBeEmptiedKeyByKey) {
  for (int i = kMany; i-- > 0;) {
    ASSERT_EQ(bundle_del(_b.get(), keyOf(i).c_str()), BUNDLE_ERROR_NONE);
  }

  EXPECT_EQ(bundle_get_count(_b.get()), 0);
}

TEST(ALongKey, MayHaveAllTheBytesThatKeysMayHaveTogether) {
  const BundlePtr b = makeBundle();
  const std::string longest(kMaxKeyBytes - 1, 'k');

  expectResult(bundle_add_str(b.get(), (longest + "k").c_str(), "x"), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_str(b.get(), longest.c_str(), "x"), BUNDLE_ERROR_NONE);
  expectResult(bundle_add_str(b.get(), "k", "x"), BUNDLE_ERROR_OUT_OF_MEMORY);
}

TEST(ALongKey, LeavesRoomForOthersWhenItIsDeleted) {
  const BundlePtr b = makeBundle();
  const std::string longest(kMaxKeyBytes - 1, 'k');
  bundle_add_str(b.get(), longest.c_str(), "x");

  bundle_del(b.get(), longest.c_str());

  expectResult(bundle_add_str(b.get(), longest.c_str(), "x"), BUNDLE_ERROR_NONE);
}

TEST(Arrays, HaveABoundedNumberOfSlotsTogether) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte_array(b.get(), "first", kMaxSlots - 1), BUNDLE_ERROR_NONE);
  expectResult(bundle_add_str_array(b.get(), "second", nullptr, 2), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_byte_array(b.get(), "second", 2), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_str_array(b.get(), "second", nullptr, 1), BUNDLE_ERROR_NONE);
  expectResult(bundle_add_byte_array(b.get(), "third", 1), BUNDLE_ERROR_OUT_OF_MEMORY);
}

TEST(Arrays, LeaveTheirSlotsToOthersWhenTheyAreDeleted) {
  const BundlePtr b = makeBundle();
  bundle_add_byte_array(b.get(), "first", kMaxSlots);

  bundle_del(b.get(), "first");

  expectResult(bundle_add_str_array(b.get(), "second", nullptr, static_cast<int>(kMaxSlots)),
               BUNDLE_ERROR_NONE);
}

TEST(Arrays, OfAnyGreaterLengthAreRefused) {
  const BundlePtr b = makeBundle();

  expectResult(bundle_add_byte_array(b.get(), "key", UINT_MAX), BUNDLE_ERROR_OUT_OF_MEMORY);
  expectResult(bundle_add_str_array(b.get(), "key", nullptr, INT_MAX), BUNDLE_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

Wire withEmptySlots(Wire wire, std::size_t slots) {
  for (std::size_t i = 0; i < slots; ++i) {
    wire.number(0);
  }
  return wire;
}

void expectRefused(const Wire &wire) {
  EXPECT_EQ(readWire(wire.bytes()), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST(AWireFormBeyondTheLimits, IsRefusedForItsKeys) {
  Wire wire;
  wire.number(kMaxKeys + 1);
  for (std::size_t i = 0; i <= kMaxKeys; ++i) {
    wire.entry(2, std::to_string(i), 1).raw("x");
  }

  expectRefused(wire);
}

TEST(AWireFormBeyondTheLimits, IsRefusedForTheBytesOfItsKeys) {
  const std::string half(kMaxKeyBytes / 2, 'k');

  expectRefused(
      Wire().number(2).entry(2, half, 1).raw("x").entry(2, half.substr(1) + "l", 1).raw("x"));
}

TEST(AWireFormBeyondTheLimits, IsRefusedForTheSlotsOfAnArray) {
  for (const std::uint32_t type : {0x102U, 0x501U}) {
    expectRefused(
        withEmptySlots(Wire().number(1).entry(type, "key", kMaxSlots + 1), kMaxSlots + 1));
  }
}

TEST(AWireFormBeyondTheLimits, IsRefusedForTheSlotsOfItsArrays) {
  const Wire full = withEmptySlots(Wire().number(2).entry(0x102, "key", kMaxSlots), kMaxSlots);

  expectRefused(Wire(full).entry(0x501, "other", 1).number(0));
}

} // namespace
