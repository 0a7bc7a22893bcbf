// SPDX-License-Identifier: Apache-2.0
#include <wire/SendQueue.h>

#include <array>
#include <common/bounds.h>
#include <gmock/gmock.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace platform::rpc_port {
namespace {

/// A queue that sends into one end of a pair of sockets, from whose other end a test reads.
class ASendQueue : public testing::Test {
protected:
  ASendQueue() {
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets.data());
  }
  ~ASendQueue() override {
    close(sockets[0]);
    close(sockets[1]);
  }

  SendOutcome send(const std::string &text) {
    OutgoingMessage message(FrameKind::Raw);
    message.add(text.data(), text.size());
    return queue.send(sockets[0], message);
  }

  SendOutcome sendShared(Buffer &buffer) {
    OutgoingMessage message(FrameKind::Raw);
    message.addShared(buffer, 0);
    return queue.send(sockets[0], message);
  }

  /// Reads what is there, and lets the queue send more, until nothing comes any more.
  std::string readAll() {
    std::string all;
    std::string piece(100000, '\0');
    for (;;) {
      const ssize_t size = read(sockets[1], piece.data(), piece.size());
      if (size <= 0) {
        return all;
      }
      all.append(piece, 0, static_cast<std::size_t>(size));
      queue.flush(sockets[0]);
    }
  }

  static std::string frameOf(const std::string &text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    const FramePrefix prefix{size, FrameKind::Raw};
    return std::string(reinterpret_cast<const char *>(&prefix), sizeof prefix) + text;
  }

  std::array<int, 2> sockets{};
  SendQueue queue;
};

const std::string kMegabyte(std::size_t{1} << 20, 'm');

TEST_F(ASendQueue, SendsAtOnceWhatTheSocketTakes) {
  EXPECT_EQ(send("text"), SendOutcome::Taken);

  EXPECT_TRUE(queue.empty());
  EXPECT_EQ(readAll(), frameOf("text"));
}

TEST_F(ASendQueue, KeepsWhatTheSocketDoesNotTake) {
  EXPECT_EQ(send(kMegabyte), SendOutcome::Taken);
  EXPECT_EQ(send("behind"), SendOutcome::Taken);
  EXPECT_FALSE(queue.empty());

  EXPECT_TRUE(readAll() == frameOf(kMegabyte) + frameOf("behind"));
  EXPECT_TRUE(queue.empty());
}

TEST_F(ASendQueue, SharesTheRestOfALongMessageAndKeepsTheOrder) {
  Buffer first;
  Buffer second;
  first.append(kMegabyte.data(), kMegabyte.size());
  second.append(kMegabyte.data(), kMegabyte.size());
  second.append("2", 1);

  EXPECT_EQ(sendShared(first), SendOutcome::Taken);
  EXPECT_EQ(send("between"), SendOutcome::Taken);
  EXPECT_EQ(sendShared(second), SendOutcome::Taken);
  first.append("written to later", 16);

  EXPECT_TRUE(readAll() == frameOf(kMegabyte) + frameOf("between") + frameOf(kMegabyte + "2"));
}

TEST_F(ASendQueue, IsFullAtItsBound) {
  const std::string text(kMaxQueued - sizeof(FramePrefix), 'x');
  send(kMegabyte);

  EXPECT_EQ(send(text), SendOutcome::Taken);
  EXPECT_EQ(send("x"), SendOutcome::Overflow);
}

TEST_F(ASendQueue, TakesOneMessageOfAnyLengthWhenItIsEmpty) {
  const std::string text(kMaxMessage, 'x');

  EXPECT_EQ(send(text), SendOutcome::Taken);
  EXPECT_EQ(send("behind"), SendOutcome::Taken);

  EXPECT_TRUE(readAll() == frameOf(text) + frameOf("behind"));
}

TEST_F(ASendQueue, SendsByItselfBeforeItSaysThatItIsFull) {
  send(std::string(300000, 'x'));
  send(std::string(kMaxQueued - sizeof(FramePrefix), 'y'));
  std::string received(1000000, '\0');
  ASSERT_GT(read(sockets[1], received.data(), received.size()), 0);

  EXPECT_EQ(send("z"), SendOutcome::Taken);
}

TEST_F(ASendQueue, SaysThatThePeerIsGone) {
  close(sockets[1]);
  sockets[1] = -1;

  EXPECT_EQ(send("text"), SendOutcome::Broken);
}

TEST_F(ASendQueue, SaysThatThePeerIsGoneWhileItFlushes) {
  send(kMegabyte);
  close(sockets[1]);
  sockets[1] = -1;

  EXPECT_FALSE(queue.flush(sockets[0]));
}

} // namespace
} // namespace platform::rpc_port
