// SPDX-License-Identifier: Apache-2.0
#include <wire/FrameReader.h>

#include "support/RawSocket.h"

#include <common/bounds.h>
#include <cstring>
#include <gmock/gmock.h>

namespace platform::rpc_port {
namespace {

using support::bytes;
using support::frame;
using support::kParcel;
using support::kRaw;

/// A reader that has been greeted, and the frames that it has put together.
class AFrameReader : public testing::Test {
protected:
  AFrameReader() { EXPECT_TRUE(feed(frame(support::kWelcome, "RPCP1234"), inbox)); }

  /// Gives the reader the bytes in pieces of at most `piece`.
  bool feed(const std::string &stream, Inbox &into, std::size_t piece = std::string::npos) {
    std::size_t done = 0;
    while (done < stream.size()) {
      const FrameReader::Space space = reader.space();
      const std::size_t size = std::min({space.size, stream.size() - done, piece});
      std::memcpy(space.bytes, stream.data() + done, size);
      if (!reader.take(size, into)) {
        return false;
      }
      done += size;
    }
    return true;
  }

  bool feed(const std::string &stream, std::size_t piece = std::string::npos) {
    return feed(stream, frames, piece);
  }

  std::string next() {
    if (frames.empty()) {
      return "nothing";
    }
    const Frame one = frames.pop();
    return {reinterpret_cast<const char *>(one.payload.data()), one.payload.size()};
  }

  FrameReader reader{FrameKind::Welcome};
  Inbox inbox;
  Inbox frames;
};

std::string longText(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    text[i] = static_cast<char>(i * 7 + i / 251);
  }
  return text;
}

TEST_F(AFrameReader, PutsAFrameTogetherHoweverItIsCut) {
  const std::string stream = frame(kRaw, "first") + frame(kRaw, "second");

  for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
    ASSERT_TRUE(feed(stream.substr(0, cut)));
    ASSERT_TRUE(feed(stream.substr(cut)));
    EXPECT_EQ(next(), "first") << cut;
    EXPECT_EQ(next(), "second") << cut;
    EXPECT_EQ(next(), "nothing") << cut;
  }
}

TEST_F(AFrameReader, GivesAFrameOnlyWhenItsLastByteIsIn) {
  const std::string stream = frame(kRaw, "text");

  feed(stream.substr(0, stream.size() - 1));
  EXPECT_TRUE(frames.empty());
  feed(stream.substr(stream.size() - 1));

  EXPECT_EQ(next(), "text");
}

TEST_F(AFrameReader, PutsLongFramesTogetherFromPiecesOfAnySize) {
  const std::string text = longText(300000);
  const std::string stream = frame(kRaw, "before") + frame(kRaw, text) + frame(kRaw, "after");

  for (const std::size_t piece : {997U, 4096U, 65536U, 1000000U}) {
    ASSERT_TRUE(feed(stream, piece));
    EXPECT_EQ(next(), "before");
    EXPECT_TRUE(next() == text) << piece;
    EXPECT_EQ(next(), "after");
  }
}

TEST_F(AFrameReader, ReceivesALongFramesRestStraightIntoItsPlace) {
  const unsigned char *shared = reader.space().bytes;
  feed(frame(kRaw, longText(100000)).substr(0, 1000));

  const FrameReader::Space space = reader.space();

  EXPECT_NE(space.bytes, shared);
  EXPECT_LE(space.size, 100008U - 1000U);
}

TEST_F(AFrameReader, ReceivesAShortFramesRestTogetherWithWhatFollows) {
  const unsigned char *shared = reader.space().bytes;
  feed(frame(kRaw, longText(1000)).substr(0, 100));

  EXPECT_EQ(reader.space().bytes, shared);
}

TEST_F(AFrameReader, DoesNotReserveWhatALengthClaims) {
  const auto claimed = static_cast<std::uint32_t>(kMaxMessage);
  feed(bytes(claimed) + bytes(std::uint32_t{kRaw}) + longText(100));

  EXPECT_LE(reader.space().size, kScratchSize);
}

TEST_F(AFrameReader, TakesTheLongestMessageThatIsAllowed) {
  const std::string text = longText(kMaxMessage);

  EXPECT_TRUE(feed(frame(kRaw, text)));

  EXPECT_TRUE(next() == text);
}

TEST_F(AFrameReader, KeepsTheFramesBeforeABadOne) {
  EXPECT_FALSE(feed(frame(kRaw, "good") + frame(99, "bad")));

  EXPECT_EQ(next(), "good");
}

TEST_F(AFrameReader, KnowsABadFrameByItsPrefixAlone) {
  const std::string prefix = bytes(std::uint32_t{1}) + bytes(std::uint32_t{99});

  EXPECT_TRUE(feed(prefix.substr(0, 7)));
  EXPECT_FALSE(feed(prefix.substr(7)));
}

TEST_F(AFrameReader, RefusesASecondGreeting) {
  EXPECT_FALSE(feed(frame(support::kWelcome, "RPCP1234")));
}

TEST_F(AFrameReader, RefusesAnotherFirstFrameThanItsGreeting) {
  FrameReader fresh(FrameKind::Hello);
  const std::string stream = frame(kParcel, std::string(24, '\0'));
  const FrameReader::Space space = fresh.space();
  std::memcpy(space.bytes, stream.data(), stream.size());

  EXPECT_FALSE(fresh.take(stream.size(), frames));
}

} // namespace
} // namespace platform::rpc_port
