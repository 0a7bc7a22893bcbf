// SPDX-License-Identifier: Apache-2.0
// Waits for another side that says nothing. Each case takes as long as the bound; side by side they
// cost ten seconds.
#include "support/Ends.h"
#include "support/RawSocket.h"

#include <array>
#include <filesystem>

namespace rpc_test {
namespace {

/// A port on which somebody listens who never says a word.
class ASilentStub : public Runtime {
protected:
  void SetUp() override {
    const std::string path = socketPath(kPort);
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    for (const auto &made : {folder.parent_path(), folder}) {
      std::filesystem::create_directory(made);
      std::filesystem::permissions(made, std::filesystem::perms::owner_all);
    }
    listening = RawSocket::listenAt(path);
    ASSERT_NE(listening, nullptr);
  }

  std::unique_ptr<RawSocket> listening;
  ProxyEnd proxy;
};

TEST_F(ASilentStub, HasTheProxyRejectedInTheEnd) {
  ASSERT_EQ(proxy.connect(), RPC_PORT_ERROR_NONE);

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));

  EXPECT_TRUE(proxy.mainPorts.empty());
}

TEST_F(ASilentStub, HasASynchronousConnectionFailInTheEnd) {
  EXPECT_EQ(rpc_port_proxy_connect_sync(proxy.handle, kAppId, kPort), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_TRUE(proxy.mainPorts.empty());
}

TEST_F(ASilentStub, HasTheProxyRejectedThatItWelcomedByHalf) {
  ASSERT_EQ(proxy.connect(), RPC_PORT_ERROR_NONE);
  const auto first = listening->accept();
  ASSERT_NE(first, nullptr);
  first->send(frame(kWelcome, "RPCP" + bytes(std::uint32_t{1})));

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));

  EXPECT_TRUE(proxy.mainPorts.empty());
}

class AHalfConnection : public Runtime {
protected:
  void SetUp() override {
    ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
    socket = RawSocket::connectTo(socketPath(kPort));
    ASSERT_NE(socket, nullptr);
  }

  StubEnd stub;
  std::unique_ptr<RawSocket> socket;
};

TEST_F(AHalfConnection, IsClosedWhenItNeverSaysHello) {
  EXPECT_TRUE(runUntil([&] { return socket->hasEnded(); }));

  EXPECT_TRUE(stub.instances.empty());
}

TEST_F(AHalfConnection, IsClosedWhenItsSecondSocketNeverComes) {
  socket->send(frame(kHello, hello(0, "i-1", "org.example.raw")));

  EXPECT_TRUE(runUntil([&] { return socket->hasEnded(); }));

  EXPECT_TRUE(stub.instances.empty());
}

class AReplyThatNeverComes : public ConnectedEnds {};

TEST_F(AReplyThatNeverComes, IsAnErrorInTheEndAndTheConnectionStays) {
  rpc_port_parcel_h reply = nullptr;

  EXPECT_EQ(rpc_port_parcel_create_from_port(&reply, proxy.port(RPC_PORT_PORT_MAIN)),
            RPC_PORT_ERROR_IO_ERROR);

  EXPECT_EQ(reply, nullptr);
  EXPECT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), "still there"), RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 1; }));
  EXPECT_EQ(proxy.endings, 0);
}

TEST_F(AReplyThatNeverComes, IsAnErrorForRawBytesToo) {
  std::array<char, 4> bytes{};

  EXPECT_EQ(rpc_port_read(proxy.port(RPC_PORT_PORT_MAIN), bytes.data(), bytes.size()),
            RPC_PORT_ERROR_IO_ERROR);

  EXPECT_EQ(proxy.endings, 0);
}

} // namespace
} // namespace rpc_test
