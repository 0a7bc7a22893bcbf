// SPDX-License-Identifier: Apache-2.0
#include "support/Ends.h"
#include "support/Program.h"

#include <array>
#include <gmock/gmock.h>
#include <numeric>

namespace rpc_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AConnection : public ConnectedEnds {};

TEST_F(AConnection, CarriesAParcelToTheStub) {
  const int result = sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  EXPECT_THAT(stub.texts, ElementsAre("request"));
}

TEST_F(AConnection, CarriesAParcelToTheProxysCallbackPort) {
  const int result = sendText(stub.port(RPC_PORT_PORT_CALLBACK), "answer");

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return !proxy.texts.empty(); }));
  EXPECT_THAT(proxy.texts, ElementsAre("answer"));
}

TEST_F(AConnection, HandsTheStubWhatComesOnTheCallbackPortToo) {
  sendText(proxy.port(RPC_PORT_PORT_CALLBACK), "other way");

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  EXPECT_THAT(stub.texts, ElementsAre("other way"));
}

TEST_F(AConnection, HandsTheStubThePortToAnswerOn) {
  stub.onReceived = [&](rpc_port_h port) {
    EXPECT_EQ(port, stub.port(RPC_PORT_PORT_MAIN));
    return sendText(port, "re: " + takeText(port));
  };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 1; }));
  settle();

  const std::string answer = takeText(proxy.port(RPC_PORT_PORT_MAIN));

  EXPECT_EQ(answer, "re: request");
}

TEST_F(AConnection, RaisesNoEventForTheProxysMainPort) {
  sendText(stub.port(RPC_PORT_PORT_MAIN), "reply");

  settle();

  EXPECT_THAT(proxy.texts, IsEmpty());
  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "reply");
}

TEST_F(AConnection, KeepsTheOrderOfMessagesWhenManyArriveAtOnce) {
  std::vector<std::string> sent;
  for (int i = 0; i < 500; ++i) {
    sent.push_back(std::to_string(i));
    ASSERT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), sent.back()), RPC_PORT_ERROR_NONE);
  }

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 500; }));
  EXPECT_EQ(stub.texts, sent);
}

TEST_F(AConnection, LetsOthersHaveTheirTurnBetweenManyMessages) {
  ProxyEnd other;
  other.connect();
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2 && other.mainPorts.size() == 1; }));
  for (int i = 0; i < 1000; ++i) {
    sendText(proxy.port(RPC_PORT_PORT_MAIN), "one of many");
  }
  sendText(other.port(RPC_PORT_PORT_MAIN), "alone");

  ASSERT_TRUE(runUntil([&] { return stub.texts.size() == 1001; }));
  const auto alone = std::find(stub.texts.begin(), stub.texts.end(), "alone");

  EXPECT_LT(alone - stub.texts.begin(), 1000);
}

class AConnectionWithAMessageOf : public ConnectedEnds,
                                  public testing::WithParamInterface<std::size_t> {
protected:
  /// A text in which a piece that went missing or came twice would show.
  static std::string longText() {
    std::string text(GetParam(), '\0');
    unsigned number = 1;
    for (char &character : text) {
      number = number * 1103515245U + 12345U;
      character = static_cast<char>('a' + (number >> 16) % 26);
    }
    return text;
  }
};

TEST_P(AConnectionWithAMessageOf, CarriesItBothWaysBetweenShortOnes) {
  const std::string text = longText();

  for (const rpc_port_h port :
       {proxy.port(RPC_PORT_PORT_MAIN), stub.port(RPC_PORT_PORT_CALLBACK)}) {
    EXPECT_EQ(sendText(port, "before"), RPC_PORT_ERROR_NONE);
    EXPECT_EQ(sendText(port, text), RPC_PORT_ERROR_NONE);
    EXPECT_EQ(sendText(port, "after"), RPC_PORT_ERROR_NONE);
  }

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 3 && proxy.texts.size() == 3; }));
  EXPECT_TRUE(stub.texts == std::vector<std::string>({"before", text, "after"}));
  EXPECT_TRUE(proxy.texts == std::vector<std::string>({"before", text, "after"}));
}

INSTANTIATE_TEST_SUITE_P(Bytes, AConnectionWithAMessageOf,
                         testing::Values(0, 1, 4096, 65535, 65536, 65537, 1 << 20, 20 << 20));

TEST_F(AConnection, CarriesAParcelThatIsWrittenToAfterItWasSent) {
  const std::string longText(std::size_t{4} << 20, 'x');
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create(&parcel);
  rpc_port_parcel_write_string(parcel, longText.c_str());

  rpc_port_parcel_send(parcel, proxy.port(RPC_PORT_PORT_MAIN));
  rpc_port_parcel_write_string(parcel, "more");
  rpc_port_parcel_send(parcel, proxy.port(RPC_PORT_PORT_MAIN));
  rpc_port_parcel_destroy(parcel);

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_TRUE(stub.texts == std::vector<std::string>({longText, longText}));
}

TEST_F(AConnection, CarriesTheHeaderOfAParcel) {
  rpc_port_parcel_h sent = nullptr;
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_create(&sent);
  rpc_port_parcel_get_header(sent, &header);
  rpc_port_parcel_header_set_tag(header, "tag");
  rpc_port_parcel_header_set_seq_num(header, 12);
  std::string received;
  stub.onReceived = [&](rpc_port_h port) {
    rpc_port_parcel_h parcel = nullptr;
    rpc_port_parcel_create_from_port(&parcel, port);
    rpc_port_parcel_header_h its = nullptr;
    rpc_port_parcel_get_header(parcel, &its);
    char *tag = nullptr;
    int number = 0;
    rpc_port_parcel_header_get_tag(its, &tag);
    rpc_port_parcel_header_get_seq_num(its, &number);
    received = std::string(tag) + " " + std::to_string(number);
    free(tag);
    rpc_port_parcel_destroy(parcel);
    return 0;
  };

  rpc_port_parcel_send(sent, proxy.port(RPC_PORT_PORT_MAIN));
  rpc_port_parcel_destroy(sent);

  EXPECT_TRUE(runUntil([&] { return !received.empty(); }));
  EXPECT_EQ(received, "tag 12");
}

TEST_F(AConnection, OffersAMessageAgainThatAHandlerLeft) {
  int calls = 0;
  stub.onReceived = [&](rpc_port_h port) {
    if (++calls == 3) {
      stub.texts.push_back(takeText(port));
    }
    return 0;
  };

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "left twice");

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  EXPECT_THAT(stub.texts, ElementsAre("left twice"));
}

TEST_F(AConnection, LetsTheLoopGoOnWhileAMessageIsLeft) {
  bool leaves = true;
  stub.onReceived = [&](rpc_port_h port) {
    if (!leaves) {
      stub.texts.push_back(takeText(port));
    }
    return 0;
  };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "left");
  settle();

  sendText(stub.port(RPC_PORT_PORT_CALLBACK), "meanwhile");
  ASSERT_TRUE(runUntil([&] { return !proxy.texts.empty(); }));
  leaves = false;

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
}

TEST_F(AConnection, HasNothingToReadWithoutAMessage) {
  EXPECT_EQ(takeText(stub.port(RPC_PORT_PORT_MAIN)), "error -5");
  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_CALLBACK)), "error -5");
}

TEST_F(AConnection, KeepsMessagesUntilSomebodyListensToThem) {
  rpc_port_stub_h silent = nullptr;
  ProxyEnd other;
  rpc_port_stub_create(&silent, "silent");
  ASSERT_EQ(rpc_port_stub_listen(silent), RPC_PORT_ERROR_NONE);
  other.connect("silent");
  ASSERT_TRUE(runUntil([&] { return !other.mainPorts.empty(); }));
  sendText(other.port(RPC_PORT_PORT_MAIN), "early");
  settle();
  std::string received;

  rpc_port_stub_add_received_event_cb(
      silent,
      [](const char *, const char *, rpc_port_h port, void *data) {
        *static_cast<std::string *>(data) = takeText(port);
        return 0;
      },
      &received);

  EXPECT_TRUE(runUntil([&] { return !received.empty(); }));
  EXPECT_EQ(received, "early");
  rpc_port_stub_destroy(silent);
}

TEST_F(AConnection, CarriesRawBytes) {
  std::array<char, 6> received{};
  stub.onReceived = [&](rpc_port_h port) {
    return rpc_port_read(port, received.data(), received.size());
  };

  const int result = rpc_port_write(proxy.port(RPC_PORT_PORT_MAIN), "bytes", 6);

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return received[0] != '\0'; }));
  EXPECT_STREQ(received.data(), "bytes");
}

TEST_F(AConnection, ReadsRawBytesInOtherPiecesThanTheyWereWritten) {
  std::array<char, 4> first{};
  std::array<char, 5> second{};
  rpc_port_write(stub.port(RPC_PORT_PORT_MAIN), "abcdef", 6);
  rpc_port_write(stub.port(RPC_PORT_PORT_MAIN), "ghi", 3);

  EXPECT_EQ(rpc_port_read(proxy.port(RPC_PORT_PORT_MAIN), first.data(), 4), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_read(proxy.port(RPC_PORT_PORT_MAIN), second.data(), 5), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(std::string(first.data(), 4), "abcd");
  EXPECT_EQ(std::string(second.data(), 5), "efghi");
}

TEST_F(AConnection, LeavesRawBytesAloneThatAreFewerThanAskedFor) {
  std::array<char, 8> bytes{};
  std::vector<int> results;
  stub.onReceived = [&](rpc_port_h port) {
    results.push_back(rpc_port_read(port, bytes.data(), 4));
    results.push_back(rpc_port_read(port, bytes.data(), 3));
    return 0;
  };

  rpc_port_write(proxy.port(RPC_PORT_PORT_MAIN), "abc", 3);

  EXPECT_TRUE(runUntil([&] { return !results.empty(); }));
  EXPECT_THAT(results, ElementsAre(RPC_PORT_ERROR_IO_ERROR, RPC_PORT_ERROR_NONE));
  EXPECT_STREQ(bytes.data(), "abc");
}

TEST_F(AConnection, DoesNotTakeAParcelForRawBytesNorRawBytesForAParcel) {
  std::array<char, 4> bytes{};
  std::vector<std::string> results;
  stub.onReceived = [&](rpc_port_h port) {
    results.push_back(std::to_string(rpc_port_read(port, bytes.data(), 1)));
    results.push_back(takeText(port));
    results.push_back(takeText(port));
    results.push_back(std::to_string(rpc_port_read(port, bytes.data(), 3)));
    return 0;
  };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "parcel");
  rpc_port_write(proxy.port(RPC_PORT_PORT_MAIN), "raw", 3);

  EXPECT_TRUE(runUntil([&] { return !results.empty(); }));

  EXPECT_THAT(results, ElementsAre("-5", "parcel", "error -5", "0"));
}

class ASynchronousReply : public Runtime {
protected:
  void SetUp() override {
    ASSERT_TRUE(peer.isReady());
    ASSERT_EQ(rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort),
              RPC_PORT_ERROR_NONE);
  }

  Program peer{"stub"};
  ProxyEnd proxy;
};

TEST_F(ASynchronousReply, IsWaitedForOnTheProxysMainPort) {
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "question");

  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "question");
}

TEST_F(ASynchronousReply, IsWaitedForBehindARequestThatTheSocketDidNotTakeAtOnce) {
  const std::string text(std::size_t{8} << 20, 'x');

  ASSERT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), text), RPC_PORT_ERROR_NONE);

  EXPECT_TRUE(takeText(proxy.port(RPC_PORT_PORT_MAIN)) == text);
}

TEST_F(ASynchronousReply, IsAnErrorWhenTheOtherSideEndsTheConnection) {
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "bye");

  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "error -5");
  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(ASynchronousReply, IsAnErrorWhenTheOtherSideExits) {
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "exit");

  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "error -5");
  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

} // namespace
} // namespace rpc_test
