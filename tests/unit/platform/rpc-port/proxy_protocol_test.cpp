// SPDX-License-Identifier: Apache-2.0
// What a proxy makes of a stub that does not keep to the protocol.
#include "support/Ends.h"
#include "support/RawSocket.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace rpc_test {
namespace {

using testing::ElementsAre;

const std::string kWelcomeFrame = frame(kWelcome, "RPCP" + bytes(std::uint32_t{1}));
constexpr std::size_t kPortTypeInHello = 8 + 4 + 2; // Behind the prefix, the magic, the version.

/// A proxy that is connected to sockets in the test's hands.
class AProxy : public Runtime {
protected:
  void SetUp() override {
    listen();
    connect();
  }

  void listen() {
    const std::filesystem::path folder = std::filesystem::path(socketPath(kPort)).parent_path();
    for (const auto &made : {folder.parent_path(), folder}) {
      std::filesystem::create_directory(made);
      std::filesystem::permissions(made, std::filesystem::perms::owner_all);
    }
    listening = RawSocket::listenAt(socketPath(kPort));
    ASSERT_NE(listening, nullptr);
  }

  void connect() {
    const std::size_t before = proxy.mainPorts.size();
    proxy.connect();
    auto one = accept();
    auto other = accept();
    ASSERT_TRUE(one && other);
    const bool mainFirst = one->receive().at(kPortTypeInHello) == RPC_PORT_PORT_MAIN;
    other->receive(); // Its hello as well.
    main = std::move(mainFirst ? one : other);
    callback = std::move(mainFirst ? other : one);
    main->send(kWelcomeFrame);
    callback->send(kWelcomeFrame);
    ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == before + 1; }));
  }

  std::unique_ptr<RawSocket> accept() {
    std::unique_ptr<RawSocket> accepted;
    runUntil([&] { return (accepted = listening->accept()) != nullptr; });
    return accepted;
  }

  std::unique_ptr<RawSocket> listening;
  std::unique_ptr<RawSocket> main;
  std::unique_ptr<RawSocket> callback;
  ProxyEnd proxy;
};

TEST_F(AProxy, TakesAMessageCutAtEveryByte) {
  const std::string message = frame(kParcel, parcel(text("cut anywhere")));

  for (std::size_t cut = 1; cut < message.size(); ++cut) {
    callback->send(message.substr(0, cut));
    settle();
    EXPECT_EQ(proxy.texts.size(), cut - 1);
    callback->send(message.substr(cut));
    ASSERT_TRUE(runUntil([&] { return proxy.texts.size() == cut; })) << cut;
  }
  EXPECT_THAT(proxy.texts, testing::Each("cut anywhere"));
}

TEST_F(AProxy, ForgetsAMessageCutAtAnyByteWhenItsStubCloses) {
  const std::string message = frame(kParcel, parcel(text("cut anywhere")));

  for (int cut = 0; cut < static_cast<int>(message.size()); ++cut) {
    callback->send(message.substr(0, static_cast<std::size_t>(cut)));
    callback.reset();
    ASSERT_TRUE(runUntil([&] { return proxy.endings == cut + 1; })) << cut;
    connect();
  }
  EXPECT_THAT(proxy.texts, ElementsAre());
}

TEST_F(AProxy, ReadsAReplyThatWasCutInTwo) {
  const std::string reply = frame(kParcel, parcel(text("a reply")));
  main->send(reply.substr(0, 9));
  settle();
  main->send(reply.substr(9));

  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "a reply");
}

/// What no stub sends after its welcome.
struct Bytes {
  const char *name;
  std::string bytes;
};

void PrintTo(const Bytes &row, std::ostream *out) {
  *out << row.name;
}

class AProxyThatReceives : public AProxy, public testing::WithParamInterface<Bytes> {};

TEST_P(AProxyThatReceives, EndsTheConnectionAfterWhatCameBefore) {
  callback->send(frame(kParcel, parcel(text("good"))) + GetParam().bytes);

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));

  EXPECT_EQ(proxy.texts.at(0), "good");
  EXPECT_TRUE(main->hasEnded());
  EXPECT_TRUE(callback->hasEnded());
}

TEST_P(AProxyThatReceives, FailsToReadItAsAReply) {
  main->send(GetParam().bytes);
  rpc_port_parcel_h reply = nullptr;

  EXPECT_EQ(rpc_port_parcel_create_from_port(&reply, proxy.port(RPC_PORT_PORT_MAIN)),
            RPC_PORT_ERROR_IO_ERROR);

  EXPECT_EQ(reply, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Bytes, AProxyThatReceives,
    testing::Values(Bytes{"AHello", frame(kHello, hello(1, "i-1", "org.example.raw"))},
                    Bytes{"ASecondWelcome", kWelcomeFrame}, Bytes{"KindZero", frame(0, parcel(""))},
                    Bytes{"KindFive", frame(5, parcel(""))},
                    Bytes{"AParcelOfLengthZero", frame(kParcel, "")},
                    Bytes{"AParcelShorterThanItsHeader", frame(kParcel, std::string(23, '\0'))},
                    Bytes{"AParcelOfFourGibibytes",
                          bytes(std::uint32_t{0xFFFFFFFF}) + bytes(std::uint32_t{kParcel})},
                    Bytes{"AParcelWithATagLongerThanItself",
                          frame(kParcel, bytes(std::uint32_t{0xFFFFFFFF}) + std::string(20, '\0'))},
                    Bytes{"Text", "HTTP/1.1 400 Bad Request\r\n\r\n"}),
    [](const auto &test) { return test.param.name; });

} // namespace
} // namespace rpc_test
