// SPDX-License-Identifier: Apache-2.0
#include "support/Wire.h"

namespace {

namespace wire = platform::bundle_wire;

TEST(TheWireForm, OfAnEmptyBundleIsItsCount) {
  const BundlePtr b = makeBundle();

  EXPECT_EQ(wireOf(b.get()), Wire().number(0).bytes());
}

TEST(TheWireForm, OfNoBundleIsThatOfAnEmptyOne) {
  EXPECT_EQ(wireOf(nullptr), Wire().number(0).bytes());
}

TEST(TheWireForm, HoldsATextWithItsNul) {
  const BundlePtr b = makeBundle();

  bundle_add_str(b.get(), "key", "text");

  EXPECT_EQ(wireOf(b.get()),
            Wire().number(1).entry(0x401, "key", 5).raw(std::string("text\0", 5)).bytes());
}

TEST(TheWireForm, HoldsBytes) {
  const BundlePtr b = makeBundle();

  bundle_add_byte(b.get(), "key", "\0\1", 2);

  EXPECT_EQ(wireOf(b.get()),
            Wire().number(1).entry(2, "key", 2).raw(std::string("\0\1", 2)).bytes());
}

TEST(TheWireForm, HoldsTextsAndEmptySlots) {
  const BundlePtr b = makeBundle();
  const char *texts[] = {"a", nullptr, ""};

  bundle_add_str_array(b.get(), "key", texts, 3);

  EXPECT_EQ(wireOf(b.get()), Wire()
                                 .number(1)
                                 .entry(0x501, "key", 3)
                                 .number(2)
                                 .raw(std::string("a\0", 2))
                                 .number(0)
                                 .number(1)
                                 .raw(std::string("\0", 1))
                                 .bytes());
}

TEST(TheWireForm, HoldsPartsAndEmptySlots) {
  const BundlePtr b = makeBundle();

  bundle_add_byte_array(b.get(), "key", 2);
  bundle_set_byte_array_element(b.get(), "key", 1, "ab", 2);

  EXPECT_EQ(wireOf(b.get()),
            Wire().number(1).entry(0x102, "key", 2).number(0).number(2).raw("ab").bytes());
}

TEST(TheWireForm, HoldsTheKeysInTheirOrder) {
  const BundlePtr b = makeBundle();

  bundle_add_byte(b.get(), "z", "1", 1);
  bundle_add_byte(b.get(), "a", "2", 1);

  EXPECT_EQ(wireOf(b.get()),
            Wire().number(2).entry(2, "z", 1).raw("1").entry(2, "a", 1).raw("2").bytes());
}

TEST(TheWireForm, IsTheSameHoweverTheBundleCameAbout) {
  const BundlePtr b = makeBundle();
  const BundlePtr other = makeBundle();
  bundle_add_str(other.get(), "gone", "x");

  addOneOfEach(b.get());
  addOneOfEach(other.get());
  bundle_del(other.get(), "gone");
  bundle_set_byte_array_element(other.get(), "parts", 1, "another", 7);
  bundle_set_byte_array_element(other.get(), "parts", 1, "ab", 2);

  EXPECT_EQ(wireOf(b.get()), wireOf(other.get()));
}

// A bundle with one value of each type, and a block that is larger than its wire form.
class WritingWithin : public testing::Test {
protected:
  WritingWithin() { addOneOfEach(_b.get()); }

  const BundlePtr _b = makeBundle();
  Bytes _block = Bytes(500, 0xee);
};

TEST_F(WritingWithin, EnoughRoomWritesTheWireForm) {
  const Bytes expected = wireOf(_b.get());

  const std::size_t size = wire::writeWithin(_b.get(), _block.data(), _block.size());

  ASSERT_EQ(size, expected.size());
  EXPECT_EQ(Bytes(_block.begin(), _block.begin() + static_cast<std::ptrdiff_t>(size)), expected);
  EXPECT_EQ(_block[size], 0xee);
}

TEST_F(WritingWithin, JustEnoughRoomWritesTheWireForm) {
  const Bytes expected = wireOf(_b.get());
  Bytes block(expected.size());

  const std::size_t size = wire::writeWithin(_b.get(), block.data(), block.size());

  EXPECT_EQ(size, expected.size());
  EXPECT_EQ(block, expected);
}

TEST_F(WritingWithin, TooLittleRoomTellsTheSizeAndStaysInside) {
  const std::size_t expected = wire::size(_b.get());

  for (std::size_t room = 0; room < expected; ++room) {
    std::fill(_block.begin(), _block.end(), static_cast<unsigned char>(0xee));
    EXPECT_EQ(wire::writeWithin(_b.get(), _block.data(), room), expected);
    EXPECT_EQ(Bytes(_block.begin() + static_cast<std::ptrdiff_t>(room), _block.end()),
              Bytes(_block.size() - room, 0xee));
  }
}

} // namespace
