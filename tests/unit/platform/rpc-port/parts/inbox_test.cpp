// SPDX-License-Identifier: Apache-2.0
#include <wire/Inbox.h>

#include <gmock/gmock.h>
#include <string>

namespace platform::rpc_port {
namespace {

Frame frameOf(FrameKind kind, const std::string &text) {
  Frame frame;
  frame.kind = kind;
  frame.payload.append(text.data(), text.size());
  return frame;
}

class AnInbox : public testing::Test {
protected:
  std::string readRaw(std::size_t size) {
    std::string bytes(size, '?');
    return inbox.readRaw(reinterpret_cast<unsigned char *>(bytes.data()), size) ? bytes : "none";
  }

  Inbox inbox;
};

TEST_F(AnInbox, GivesFramesInTheOrderOfArrival) {
  inbox.push(frameOf(FrameKind::Parcel, "one"));
  inbox.push(frameOf(FrameKind::Raw, "two"));

  EXPECT_EQ(inbox.pop().kind, FrameKind::Parcel);
  EXPECT_EQ(inbox.pop().kind, FrameKind::Raw);
  EXPECT_TRUE(inbox.empty());
}

TEST_F(AnInbox, NumbersItsFramesForGood) {
  EXPECT_EQ(inbox.frontNumber(), 0U);
  inbox.push(frameOf(FrameKind::Raw, "one"));
  inbox.push(frameOf(FrameKind::Raw, "two"));
  EXPECT_EQ(inbox.frontNumber(), 0U);

  (void)inbox.pop();
  EXPECT_EQ(inbox.frontNumber(), 1U);
  inbox.clear();

  EXPECT_EQ(inbox.frontNumber(), 2U);
}

TEST_F(AnInbox, ReadsRawBytesAcrossFrames) {
  inbox.push(frameOf(FrameKind::Raw, "abc"));
  inbox.push(frameOf(FrameKind::Raw, "def"));

  EXPECT_EQ(readRaw(2), "ab");
  EXPECT_EQ(readRaw(3), "cde");
  EXPECT_EQ(readRaw(1), "f");
  EXPECT_TRUE(inbox.empty());
}

TEST_F(AnInbox, ReadsNothingWhenFewerRawBytesAreThere) {
  inbox.push(frameOf(FrameKind::Raw, "abc"));
  EXPECT_EQ(readRaw(1), "a");

  EXPECT_EQ(readRaw(3), "none");
  EXPECT_EQ(readRaw(2), "bc");
}

TEST_F(AnInbox, DoesNotReadRawBytesBeyondAParcel) {
  inbox.push(frameOf(FrameKind::Raw, "abc"));
  inbox.push(frameOf(FrameKind::Parcel, "parcel"));
  inbox.push(frameOf(FrameKind::Raw, "def"));

  EXPECT_EQ(readRaw(4), "none");
  EXPECT_EQ(readRaw(3), "abc");
  EXPECT_EQ(readRaw(1), "none");
}

} // namespace
} // namespace platform::rpc_port
