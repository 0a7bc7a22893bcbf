// SPDX-License-Identifier: Apache-2.0
// What a stub makes of peers that keep to the protocol, and of those that do not.
#include "support/Ends.h"
#include "support/Log.h"
#include "support/RawSocket.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rpc_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string kWelcomeFrame = frame(kWelcome, "RPCP" + bytes(std::uint32_t{1}));

class AStub : public Runtime {
protected:
  void SetUp() override { ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE); }

  std::unique_ptr<RawSocket> dial() { return RawSocket::connectTo(socketPath(kPort)); }

  std::unique_ptr<RawSocket> dial(const std::string &firstBytes) {
    auto socket = dial();
    socket->send(firstBytes);
    return socket;
  }

  static std::string helloFrame(std::uint16_t type, const std::string &instance = "i-1") {
    return frame(kHello, hello(type, instance, "org.example.raw"));
  }

  /// Whether the stub closes this socket, and no connection comes of it.
  testing::AssertionResult refuses(RawSocket &socket) {
    if (!runUntil([&] { return socket.hasEnded(); })) {
      return testing::AssertionFailure() << "the socket stays open";
    }
    return testing::AssertionSuccess();
  }

  void connectBoth() {
    main = dial(helloFrame(0));
    callback = dial(helloFrame(1));
    ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 1; }));
    EXPECT_EQ(main->receive(), kWelcomeFrame);
    EXPECT_EQ(callback->receive(), kWelcomeFrame);
  }

  StubEnd stub;
  std::unique_ptr<RawSocket> main;
  std::unique_ptr<RawSocket> callback;
};

TEST_F(AStub, WelcomesBothSocketsOnceBothHaveSaidHello) {
  main = dial(helloFrame(0));
  settle();
  EXPECT_THAT(stub.instances, IsEmpty());
  EXPECT_EQ(main->receive(), "");

  callback = dial(helloFrame(1));

  EXPECT_TRUE(runUntil([&] { return stub.instances.size() == 1; }));
  EXPECT_EQ(main->receive(), kWelcomeFrame);
  EXPECT_EQ(callback->receive(), kWelcomeFrame);
  EXPECT_THAT(stub.instances, ElementsAre("i-1"));
  EXPECT_THAT(stub.senders, ElementsAre("org.example.raw"));
}

TEST_F(AStub, TakesTheTwoSocketsInAnyOrder) {
  callback = dial(helloFrame(1));
  settle();

  main = dial(helloFrame(0));

  EXPECT_TRUE(runUntil([&] { return stub.instances.size() == 1; }));
}

TEST_F(AStub, TakesAHelloThatComesByteByByte) {
  callback = dial(helloFrame(1));
  main = dial();
  for (const char byte : helloFrame(0)) {
    EXPECT_THAT(stub.instances, IsEmpty());
    main->send(std::string(1, byte));
    settle();
  }

  EXPECT_TRUE(runUntil([&] { return stub.instances.size() == 1; }));
}

TEST_F(AStub, HandsOutRequestsAfterConnectedThatCameBeforeTheSecondSocket) {
  stub.onConnected = [&] { EXPECT_THAT(stub.texts, IsEmpty()); };
  main = dial(helloFrame(0) + frame(kParcel, parcel(text("one"))));
  settle();
  main->send(frame(kParcel, parcel(text("two"))));
  settle();
  EXPECT_THAT(stub.instances, IsEmpty());

  callback = dial(helloFrame(1));

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_THAT(stub.texts, ElementsAre("one", "two"));
}

TEST_F(AStub, TakesAMessageCutAtEveryByte) {
  connectBoth();
  const std::string message = frame(kParcel, parcel(text("cut anywhere")));

  for (std::size_t cut = 1; cut < message.size(); ++cut) {
    main->send(message.substr(0, cut));
    settle();
    EXPECT_THAT(stub.texts, SizeIs(cut - 1));
    main->send(message.substr(cut));
    ASSERT_TRUE(runUntil([&] { return stub.texts.size() == cut; })) << cut;
  }
  EXPECT_THAT(stub.texts, testing::Each("cut anywhere"));
}

TEST_F(AStub, SendsAParcelAsItIsDocumented) {
  connectBoth();
  rpc_port_parcel_h sent = nullptr;
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_create(&sent);
  rpc_port_parcel_get_header(sent, &header);
  rpc_port_parcel_header_set_seq_num(header, 5);
  rpc_port_parcel_write_string(sent, "hi");

  rpc_port_parcel_send(sent, stub.port(RPC_PORT_PORT_CALLBACK));
  rpc_port_parcel_destroy(sent);

  const std::string received = callback->receive();
  ASSERT_THAT(received, SizeIs(8 + 24 + 7));
  EXPECT_EQ(received.substr(0, 8), bytes(std::uint32_t{31}) + bytes(std::uint32_t{kParcel}));
  EXPECT_EQ(received.substr(8, 8), bytes(std::uint32_t{0}) + bytes(std::int32_t{5}));
  EXPECT_EQ(received.substr(32), text("hi"));
}

TEST_F(AStub, EndsAConnectionOfWhichOneSocketCloses) {
  connectBoth();

  callback.reset();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_TRUE(main->hasEnded());
}

TEST_F(AStub, HandsOutTheOtherSocketsMessagesBeforeItEndsTheConnection) {
  connectBoth();
  main->send(frame(kParcel, parcel(text("last words"))));

  callback.reset();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.texts, ElementsAre("last words"));
}

TEST_F(AStub, ForgetsAMessageThatIsNotWholeWhenItsSenderCloses) {
  connectBoth();
  main->send(frame(kParcel, parcel(text("whole"))) + frame(kParcel, parcel("cut")).substr(0, 20));

  main.reset();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.texts, ElementsAre("whole"));
}

TEST_F(AStub, ForgetsAMessageCutAtAnyByteWhenItsSenderCloses) {
  const std::string message = frame(kParcel, parcel(text("cut anywhere")));

  for (std::size_t cut = 0; cut < message.size(); ++cut) {
    const std::string instance = "i-" + std::to_string(cut);
    main = dial(helloFrame(0, instance) + message.substr(0, cut));
    callback = dial(helloFrame(1, instance));
    ASSERT_TRUE(runUntil([&] { return stub.instances.size() == cut + 1; })) << cut;
    main.reset();
    ASSERT_TRUE(runUntil([&] { return stub.ended.size() == cut + 1; })) << cut;
  }
  EXPECT_THAT(stub.texts, IsEmpty());
}

TEST_F(AStub, DropsASocketWhoseHelloIsCutAtAnyByte) {
  const std::size_t before = countDescriptors();
  const std::string message = helloFrame(0);

  for (std::size_t cut = 0; cut < message.size(); ++cut) {
    dial(message.substr(0, cut)).reset();
    ASSERT_TRUE(runUntil([&] { return countDescriptors() == before; })) << cut;
  }
  EXPECT_THAT(stub.instances, IsEmpty());
}

TEST_F(AStub, SaysNothingOfSomebodyWhoOnlyLooksWhetherItListens) {
  const Log log(directory() + "/log");

  const std::size_t before = countDescriptors();
  dial().reset();
  settle();
  ASSERT_TRUE(runUntil([&] { return countDescriptors() == before; }));
  EXPECT_THAT(log.text(), IsEmpty());

  dial(helloFrame(0).substr(0, 5)).reset();
  EXPECT_TRUE(runUntil([&] { return log.text().find("said no hello") != std::string::npos; }));
}

TEST_F(AStub, EndsAConnectionOfWhichOneSocketIsClosedHalf) {
  connectBoth();

  shutdown(main->descriptor(), SHUT_WR);

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(AStub, RefusesAnInstanceThatIsInUse) {
  connectBoth();

  const auto third = dial(helloFrame(0));
  const auto fourth = dial(helloFrame(1));

  EXPECT_TRUE(refuses(*third));
  EXPECT_TRUE(refuses(*fourth));
  EXPECT_THAT(stub.instances, SizeIs(1));
  EXPECT_THAT(stub.ended, IsEmpty());
}

TEST_F(AStub, RefusesASecondSocketOfOneType) {
  main = dial(helloFrame(0));
  settle();

  const auto second = dial(helloFrame(0));

  EXPECT_TRUE(refuses(*second));
  EXPECT_FALSE(main->hasEnded());
}

TEST_F(AStub, RefusesASecondSocketOfAnotherSender) {
  main = dial(helloFrame(0));
  settle();

  const auto second = dial(frame(kHello, hello(1, "i-1", "org.example.other")));

  EXPECT_TRUE(refuses(*second));
  EXPECT_FALSE(main->hasEnded());
}

TEST_F(AStub, RefusesASecondSocketOfAnotherProcess) {
  main = dial(helloFrame(0));
  settle();
  const pid_t child = fork();
  if (child == 0) {
    const auto second = dial(helloFrame(1));
    while (!second->hasEnded()) {
      usleep(1000);
    }
    _exit(0);
  }
  int status = -1;

  EXPECT_TRUE(runUntil([&] { return waitpid(child, &status, WNOHANG) == child; }));

  EXPECT_EQ(status, 0);
  EXPECT_THAT(stub.instances, IsEmpty());
  EXPECT_FALSE(main->hasEnded());
}

TEST_F(AStub, DropsAHalfConnectionThatCloses) {
  const std::size_t before = countDescriptors();
  main = dial(helloFrame(0));
  settle();

  main.reset();
  settle();

  EXPECT_EQ(countDescriptors(), before);
  EXPECT_THAT(stub.ended, IsEmpty());
}

TEST_F(AStub, TakesNewConnectionsWhateverOthersDid) {
  const auto silent = dial();
  const auto garbage = dial("GET / HTTP/1.1\r\n\r\n");
  const auto half = dial(helloFrame(0, "i-2"));

  connectBoth();

  EXPECT_TRUE(refuses(*garbage));
}

/// The first bytes of a socket that no stub takes.
struct FirstBytes {
  const char *name;
  std::string bytes;
};

void PrintTo(const FirstBytes &row, std::ostream *out) {
  *out << row.name;
}

class AStubThatIsGreetedWith : public AStub, public testing::WithParamInterface<FirstBytes> {};

TEST_P(AStubThatIsGreetedWith, ClosesTheSocket) {
  const auto socket = dial(GetParam().bytes);

  EXPECT_TRUE(refuses(*socket));
}

std::string changed(std::string text, std::size_t at, char to) {
  text.at(at) = to;
  return text;
}

const std::string kGoodHello = hello(0, "i", "org.example.raw");

INSTANTIATE_TEST_SUITE_P(
    Bytes, AStubThatIsGreetedWith,
    testing::Values(
        FirstBytes{"Text", "hello, is there anybody there?"},
        FirstBytes{"AParcel", frame(kParcel, parcel(""))},
        FirstBytes{"RawBytes", frame(kRaw, "raw")}, FirstBytes{"AWelcome", kWelcomeFrame},
        FirstBytes{"AnEmptyHello", frame(kHello, "")},
        FirstBytes{"AHelloOfAnotherMagic", frame(kHello, changed(kGoodHello, 0, 'X'))},
        FirstBytes{"AHelloOfAnotherVersion", frame(kHello, changed(kGoodHello, 4, 2))},
        FirstBytes{"AHelloOfAnotherPortType", frame(kHello, changed(kGoodHello, 6, 2))},
        FirstBytes{"AHelloOfALongerInstance", frame(kHello, changed(kGoodHello, 8, 2))},
        FirstBytes{"AHelloOfALongerSender", frame(kHello, changed(kGoodHello, 10, 99))},
        FirstBytes{"AHelloCutShort", frame(kHello, kGoodHello.substr(0, kGoodHello.size() - 1))},
        FirstBytes{"AHelloWithMoreBehindIt", frame(kHello, kGoodHello + "x")},
        FirstBytes{"AHelloWithoutInstance", frame(kHello, hello(0, "", "org.example.raw"))},
        FirstBytes{"AHelloWithoutSender", frame(kHello, hello(0, "i", ""))},
        FirstBytes{"AHelloWithASlashInTheSender", frame(kHello, hello(0, "i", "a/b"))},
        FirstBytes{"AHelloWithANulInTheInstance",
                   frame(kHello, hello(0, std::string("i\0j", 3), "a"))},
        FirstBytes{"AnInstanceThatIsTooLong", frame(kHello, hello(0, std::string(65, 'i'), "a"))},
        FirstBytes{"ASenderThatIsTooLong", frame(kHello, hello(0, "i", std::string(256, 'a')))},
        FirstBytes{"AClaimOfAnEndlessHello",
                   bytes(std::uint32_t{0xFFFFFFFF}) + bytes(std::uint32_t{kHello})}),
    [](const auto &test) { return test.param.name; });

class AStubThatReceives : public AStub, public testing::WithParamInterface<FirstBytes> {};

TEST_P(AStubThatReceives, EndsThatConnectionAfterWhatCameBefore) {
  connectBoth();
  const auto otherMain = dial(helloFrame(0, "i-2"));
  const auto otherCallback = dial(helloFrame(1, "i-2"));
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2; }));

  main->send(frame(kParcel, parcel(text("good"))) + GetParam().bytes);

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.ended, ElementsAre("i-1"));
  EXPECT_EQ(stub.texts.at(0), "good");
  EXPECT_TRUE(main->hasEnded());
  EXPECT_TRUE(callback->hasEnded());
  EXPECT_FALSE(otherMain->hasEnded());
}

INSTANTIATE_TEST_SUITE_P(
    Bytes, AStubThatReceives,
    testing::Values(FirstBytes{"AnotherHello", frame(kHello, hello(0, "i-1", "org.example.raw"))},
                    FirstBytes{"AWelcome", kWelcomeFrame},
                    FirstBytes{"KindZero", frame(0, parcel(""))},
                    FirstBytes{"KindFive", frame(5, parcel(""))},
                    FirstBytes{"AKindOutOfAllBounds", frame(0xFFFFFFFF, parcel(""))},
                    FirstBytes{"AParcelOfLengthZero", frame(kParcel, "")},
                    FirstBytes{"AParcelShorterThanItsHeader",
                               frame(kParcel, std::string(23, '\0'))},
                    FirstBytes{"RawBytesOfLengthZero", frame(kRaw, "")},
                    FirstBytes{"AParcelLongerThanTheBound", bytes(std::uint32_t{(64U << 20) + 1})
                                                                + bytes(std::uint32_t{kParcel})},
                    FirstBytes{"RawBytesLongerThanTheBound",
                               bytes(std::uint32_t{0xFFFFFFFF}) + bytes(std::uint32_t{kRaw})},
                    FirstBytes{"AParcelWithABadHeader",
                               frame(kParcel, bytes(std::uint32_t{1}) + std::string(20, '\0'))}),
    [](const auto &test) { return test.param.name; });

} // namespace
} // namespace rpc_test
