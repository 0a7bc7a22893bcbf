// SPDX-License-Identifier: Apache-2.0
#include <SpareBlock.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<void *> freed;

void noteFreed(void *block) {
  if (block != nullptr) {
    freed.push_back(block);
  }
  std::free(block);
}

using Spare = platform::SpareBlock<noteFreed>;

#ifndef PLATFORM_ADDRESS_SANITIZER // under which no block is kept

constexpr std::size_t kSize = Spare::kSmallest;

class ASpareBlock : public testing::Test {
protected:
  ASpareBlock() { freed.clear(); }
  ~ASpareBlock() override { std::free(_spare.take(_kept)); }
  ASpareBlock(const ASpareBlock &) = delete;
  ASpareBlock &operator=(const ASpareBlock &) = delete;

  void *release(std::size_t size) {
    void *block = std::malloc(size);
    _spare.release(block, size);
    _kept = size;
    return block;
  }

  Spare _spare;
  std::size_t _kept = 0;
};

TEST_F(ASpareBlock, IsHandedOutForTheSameSize) {
  void *block = release(kSize);

  void *taken = _spare.take(kSize);

  EXPECT_EQ(taken, block);
  EXPECT_TRUE(freed.empty());
  std::free(taken);
}

TEST_F(ASpareBlock, IsHandedOutOnce) {
  release(kSize);
  std::free(_spare.take(kSize));

  EXPECT_EQ(_spare.take(kSize), nullptr);
}

TEST_F(ASpareBlock, IsHandedOutForALittleLess) {
  void *block = release(2 * kSize - 1);

  void *taken = _spare.take(kSize);

  EXPECT_EQ(taken, block);
  std::free(taken);
}

TEST_F(ASpareBlock, IsFreedWhenItWouldWasteAsMuchAsItServes) {
  void *block = release(2 * kSize);

  EXPECT_EQ(_spare.take(kSize), nullptr);
  EXPECT_EQ(freed, std::vector<void *>{block});
}

TEST_F(ASpareBlock, IsFreedWhenItIsTooSmall) {
  void *block = release(kSize);

  EXPECT_EQ(_spare.take(kSize + 1), nullptr);
  EXPECT_EQ(freed, std::vector<void *>{block});
}

TEST_F(ASpareBlock, StaysWhenASmallBlockIsAskedFor) {
  void *block = release(kSize);

  EXPECT_EQ(_spare.take(kSize - 1), nullptr);

  void *taken = _spare.take(kSize);
  EXPECT_EQ(taken, block);
  std::free(taken);
}

TEST_F(ASpareBlock, IsReplacedByTheNextOne) {
  void *first = release(kSize);
  void *second = release(kSize);

  void *taken = _spare.take(kSize);

  EXPECT_EQ(taken, second);
  EXPECT_EQ(freed, std::vector<void *>{first});
  std::free(taken);
}

TEST_F(ASpareBlock, IsNoneOfTheSmallOnes) {
  void *block = release(kSize - 1);

  EXPECT_EQ(freed, std::vector<void *>{block});
}

TEST_F(ASpareBlock, IsNoneOfTheVeryLargeOnes) {
  void *block = release(Spare::kLargest + 1);

  EXPECT_EQ(freed, std::vector<void *>{block});
  EXPECT_EQ(_spare.take(Spare::kLargest + 1), nullptr);
}

TEST_F(ASpareBlock, MayBeTheLargestOneThatIsKept) {
  void *block = release(Spare::kLargest);

  void *taken = _spare.take(Spare::kLargest);

  EXPECT_EQ(taken, block);
  std::free(taken);
}

#endif

TEST(WithoutASpareBlock, NoneIsHandedOut) {
  Spare spare;

  EXPECT_EQ(spare.take(Spare::kSmallest), nullptr);
}

} // namespace
