// SPDX-License-Identifier: Apache-2.0
#include <wire/Buffer.h>

#include <gmock/gmock.h>
#include <string>
#include <utility>

namespace platform::rpc_port {
namespace {

std::string textOf(const Buffer &buffer) {
  return {reinterpret_cast<const char *>(buffer.data()), buffer.size()};
}

Buffer holding(const std::string &text) {
  Buffer buffer;
  buffer.append(text.data(), text.size());
  return buffer;
}

TEST(ABuffer, KeepsItsBytesWhileItGrows) {
  Buffer buffer;
  std::string expected;

  for (int i = 0; i < 2000; ++i) {
    const std::string piece = std::to_string(i);
    buffer.append(piece.data(), piece.size());
    expected += piece;
  }

  EXPECT_EQ(textOf(buffer), expected);
}

TEST(ABuffer, IsEmptyAfterItWasMoved) {
  Buffer first = holding("text");

  const Buffer second = std::move(first);

  EXPECT_EQ(textOf(second), "text");
  EXPECT_TRUE(first.empty()); // NOLINT(bugprone-use-after-move): just that is tested.
}

TEST(ABuffer, SharesItsBytesWithoutACopy) {
  Buffer first = holding("text");

  const Buffer second = first.share();

  EXPECT_EQ(second.data(), first.data());
  EXPECT_EQ(textOf(second), "text");
}

TEST(ABuffer, GetsBytesOfItsOwnWhenItIsWrittenToWhileShared) {
  Buffer first = holding("text");
  Buffer second = first.share();

  first.append("1", 1);
  second.append("2", 1);

  EXPECT_EQ(textOf(first), "text1");
  EXPECT_EQ(textOf(second), "text2");
}

TEST(ABuffer, OutlivesTheOneThatSharedIt) {
  Buffer second;
  {
    Buffer first = holding("text");
    second = first.share();
  }

  EXPECT_EQ(textOf(second), "text");
}

TEST(ABuffer, SharesNothingWhenItIsEmpty) {
  Buffer first;

  Buffer second = first.share();
  second.append("text", 4);

  EXPECT_TRUE(first.empty());
  EXPECT_EQ(textOf(second), "text");
}

// Large memory is used again: the next buffer may be where the last one was.
constexpr std::size_t kLarge = std::size_t{64} << 10;

TEST(ALargeBuffer, KeepsItsBytesWhenItMovesToMemoryThatAnotherHasReleased) {
  { const Buffer released = holding(std::string(2 * kLarge, 'r')); }
  Buffer buffer = holding(std::string(kLarge, 'x'));

  buffer.append("y", 1);

  EXPECT_EQ(textOf(buffer), std::string(kLarge, 'x') + "y");
}

TEST(ALargeBuffer, LeavesTheOtherHolderItsBytesWhenItMoves) {
  { const Buffer released = holding(std::string(2 * kLarge, 'r')); }
  Buffer first = holding(std::string(kLarge, 'x'));
  const Buffer second = first.share();

  first.append("y", 1);

  EXPECT_EQ(textOf(first), std::string(kLarge, 'x') + "y");
  EXPECT_EQ(textOf(second), std::string(kLarge, 'x'));
}

TEST(ALargeBuffer, IsNotDisturbedByOneThatIsMadeWhenAnotherHolderReleasesIt) {
  Buffer first = holding(std::string(kLarge, 'x'));
  { const Buffer second = first.share(); }

  const Buffer third = holding(std::string(kLarge, 'z'));

  EXPECT_EQ(textOf(first), std::string(kLarge, 'x'));
}

TEST(ABuffer, MakesBytesOfWhatIsPutIntoItsRoom) {
  Buffer buffer;
  buffer.reserve(10);
  ASSERT_EQ(buffer.roomSize(), 10U);
  buffer.room()[0] = 'x';

  buffer.take(1);

  EXPECT_EQ(textOf(buffer), "x");
  EXPECT_EQ(buffer.roomSize(), 9U);
}

} // namespace
} // namespace platform::rpc_port
