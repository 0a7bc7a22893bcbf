// SPDX-License-Identifier: Apache-2.0
#include "support/Ends.h"
#include "support/Program.h"
#include "support/RawSocket.h"

#include <Ecore.h>
#include <gmock/gmock.h>

namespace rpc_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class AnEnd : public ConnectedEnds {
protected:
  bool bothAreTold() {
    return runUntil([this] { return stub.ended.size() == 1 && proxy.endings == 1; });
  }
};

TEST_F(AnEnd, ComesOnceToBothSidesWhenTheStubDisconnects) {
  const int result = rpc_port_disconnect(stub.port(RPC_PORT_PORT_MAIN));

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(bothAreTold());
  settle();
  EXPECT_EQ(stub.ended, stub.instances);
  EXPECT_EQ(proxy.endings, 1);
}

TEST_F(AnEnd, ComesOnceToBothSidesWhenTheProxyDisconnects) {
  const int result = rpc_port_disconnect(proxy.port(RPC_PORT_PORT_CALLBACK));

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(bothAreTold());
  settle();
  EXPECT_EQ(stub.ended, stub.instances);
  EXPECT_EQ(proxy.endings, 1);
}

TEST_F(AnEnd, IsNotToldInsideTheCallThatBringsItAbout) {
  rpc_port_disconnect(stub.port(RPC_PORT_PORT_MAIN));
  rpc_port_disconnect(proxy.port(RPC_PORT_PORT_MAIN));

  EXPECT_THAT(stub.ended, IsEmpty());
  EXPECT_EQ(proxy.endings, 0);
}

TEST_F(AnEnd, ComesToTheProxyWhenTheStubIsDestroyed) {
  stub.destroy();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
  EXPECT_THAT(stub.ended, IsEmpty());
}

TEST_F(AnEnd, ComesToTheStubWhenTheProxyIsDestroyed) {
  proxy.destroy();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_EQ(proxy.endings, 0);
}

TEST_F(AnEnd, ComesWhenAHandlerReturnsAnotherResultThanZero) {
  stub.onReceived = [](rpc_port_h port) {
    takeText(port);
    return 7;
  };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "first");
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "second");

  EXPECT_TRUE(bothAreTold());
}

TEST_F(AnEnd, ComesOnlyToTheConnectionWhoseHandlerAskedForIt) {
  ProxyEnd other;
  other.connect();
  ASSERT_TRUE(runUntil([&] { return other.mainPorts.size() == 1 && stub.instances.size() == 2; }));
  stub.onReceived = [](rpc_port_h port) { return takeText(port) == "end" ? -1 : 0; };

  sendText(other.port(RPC_PORT_PORT_MAIN), "end");

  EXPECT_TRUE(runUntil([&] { return other.endings == 1; }));
  EXPECT_EQ(stub.ended, std::vector<std::string>{stub.instances.at(1)});
  EXPECT_EQ(proxy.endings, 0);
}

TEST_F(AnEnd, ComesAfterEverythingThatHadBeenSent) {
  std::vector<std::string> sent;
  for (int i = 0; i < 300; ++i) {
    sent.push_back(std::to_string(i));
    sendText(proxy.port(RPC_PORT_PORT_MAIN), sent.back());
  }
  stub.onDisconnected = [&] { stub.texts.emplace_back("end"); };

  proxy.destroy();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  sent.emplace_back("end");
  EXPECT_EQ(stub.texts, sent);
}

TEST_F(AnEnd, ComesAfterMessagesThatArrivedWhileEarlierOnesWereHandedOut) {
  std::vector<std::string> expected;
  const auto send = [&](const std::string &text) {
    expected.push_back(text);
    sendText(proxy.port(RPC_PORT_PORT_MAIN), text);
  };
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      send("late");
      proxy.destroy();
    }
    return 0;
  };

  for (int i = 0; i < 100; ++i) {
    send(std::to_string(i));
  }

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_EQ(stub.texts, expected);
}

TEST_F(AnEnd, ComesAfterEverythingThatHadBeenSentToTheProxy) {
  sendText(stub.port(RPC_PORT_PORT_CALLBACK), "one");
  sendText(stub.port(RPC_PORT_PORT_CALLBACK), std::string(100000, 'x'));
  proxy.onDisconnected = [&] { proxy.texts.emplace_back("end"); };

  stub.destroy();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
  EXPECT_THAT(proxy.texts, ElementsAre("one", std::string(100000, 'x'), "end"));
}

TEST_F(AnEnd, ComesThoughTheLastMessageIsNeverTaken) {
  stub.onReceived = [](rpc_port_h) { return 0; };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "never taken");
  settle();

  proxy.destroy();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(AnEnd, LeavesPortsThatRefuseEverything) {
  const rpc_port_h stubPort = stub.port(RPC_PORT_PORT_CALLBACK);
  const rpc_port_h proxyPort = proxy.port(RPC_PORT_PORT_MAIN);
  char byte = 0;

  rpc_port_disconnect(stubPort);
  ASSERT_TRUE(bothAreTold());

  for (const rpc_port_h port : {stubPort, proxyPort}) {
    EXPECT_EQ(sendText(port, "late"), RPC_PORT_ERROR_IO_ERROR);
    EXPECT_EQ(takeText(port), "error -5");
    EXPECT_EQ(rpc_port_read(port, &byte, 1), RPC_PORT_ERROR_IO_ERROR);
    EXPECT_EQ(rpc_port_write(port, &byte, 1), RPC_PORT_ERROR_IO_ERROR);
    EXPECT_EQ(rpc_port_disconnect(port), RPC_PORT_ERROR_IO_ERROR);
    EXPECT_EQ(rpc_port_set_private_sharing(port, "/path"), RPC_PORT_ERROR_IO_ERROR);
  }
}

TEST_F(AnEnd, LeavesNoPortToBeFound) {
  rpc_port_disconnect(stub.port(RPC_PORT_PORT_MAIN));
  ASSERT_TRUE(bothAreTold());

  rpc_port_h port = nullptr;

  EXPECT_EQ(
      rpc_port_stub_get_port(stub.handle, RPC_PORT_PORT_MAIN, stub.instances[0].c_str(), &port),
      RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(rpc_port_proxy_get_port(proxy.handle, RPC_PORT_PORT_MAIN, &port),
            RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(port, nullptr);
}

TEST_F(AnEnd, IsNoneOfANewConnectionsPorts) {
  const rpc_port_h stale = stub.port(RPC_PORT_PORT_CALLBACK);
  rpc_port_disconnect(stale);
  ASSERT_TRUE(bothAreTold());
  proxy.connect();
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2 && proxy.mainPorts.size() == 2; }));

  EXPECT_EQ(sendText(stale, "to nobody"), RPC_PORT_ERROR_IO_ERROR);
  settle();
  EXPECT_THAT(proxy.texts, IsEmpty());
}

TEST_F(AnEnd, StopsSendingAtOnceOnTheSideThatBringsItAbout) {
  const rpc_port_h port = stub.port(RPC_PORT_PORT_CALLBACK);

  rpc_port_disconnect(port);

  EXPECT_EQ(sendText(port, "late"), RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(takeText(port), "error -5");
}

TEST_F(AnEnd, LeavesNothingOpen) {
  const std::size_t before = countDescriptors();
  ProxyEnd other;
  other.connect();
  ASSERT_TRUE(runUntil([&] { return other.mainPorts.size() == 1 && stub.instances.size() == 2; }));

  rpc_port_disconnect(other.port(RPC_PORT_PORT_MAIN));
  ASSERT_TRUE(runUntil([&] { return stub.ended.size() == 1 && other.endings == 1; }));

  EXPECT_EQ(countDescriptors(), before);
}

/// One of the four handles of a connection's two ports.
struct PortOfASide {
  const char *name;
  rpc_port_h (*find)(const StubEnd &stub, const ProxyEnd &proxy);
  bool isMain;
};

void PrintTo(const PortOfASide &row, std::ostream *out) {
  *out << row.name;
}

class TheEndOfOnePort : public AnEnd, public testing::WithParamInterface<PortOfASide> {
protected:
  rpc_port_h port() const { return GetParam().find(stub, proxy); }
  /// Sends on the other port, in the direction in which messages are announced.
  int sendOnTheOther(const std::string &text) const {
    return GetParam().isMain ? sendText(stub.port(RPC_PORT_PORT_CALLBACK), text)
                             : sendText(proxy.port(RPC_PORT_PORT_MAIN), text);
  }
  const std::vector<std::string> &receivedOnTheOther() const {
    return GetParam().isMain ? proxy.texts : stub.texts;
  }
};

INSTANTIATE_TEST_SUITE_P(, TheEndOfOnePort,
                         testing::Values(PortOfASide{"StubMain",
                                                     [](const StubEnd &stub, const ProxyEnd &) {
                                                       return stub.port(RPC_PORT_PORT_MAIN);
                                                     },
                                                     true},
                                         PortOfASide{"StubCallback",
                                                     [](const StubEnd &stub, const ProxyEnd &) {
                                                       return stub.port(RPC_PORT_PORT_CALLBACK);
                                                     },
                                                     false},
                                         PortOfASide{"ProxyMain",
                                                     [](const StubEnd &, const ProxyEnd &proxy) {
                                                       return proxy.port(RPC_PORT_PORT_MAIN);
                                                     },
                                                     true},
                                         PortOfASide{"ProxyCallback",
                                                     [](const StubEnd &, const ProxyEnd &proxy) {
                                                       return proxy.port(RPC_PORT_PORT_CALLBACK);
                                                     },
                                                     false}),
                         [](const auto &test) { return test.param.name; });

TEST_P(TheEndOfOnePort, LeavesTheOtherPortWorking) {
  ASSERT_EQ(rpc_port_disconnect(port()), RPC_PORT_ERROR_NONE);
  settle();
  EXPECT_THAT(stub.ended, IsEmpty());
  EXPECT_EQ(proxy.endings, 0);

  EXPECT_EQ(sendOnTheOther("still there"), RPC_PORT_ERROR_NONE);

  EXPECT_TRUE(runUntil([this] { return !receivedOnTheOther().empty(); }));
  EXPECT_THAT(receivedOnTheOther(), ElementsAre("still there"));
}

TEST_P(TheEndOfOnePort, IsTheEndOfItsHandle) {
  const rpc_port_h ended = port();

  rpc_port_disconnect(ended);

  EXPECT_EQ(sendText(ended, "late"), RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(takeText(ended), "error -5");
  EXPECT_EQ(rpc_port_disconnect(ended), RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(port(), nullptr);
}

TEST_P(TheEndOfOnePort, IsToldToBothSidesWhenTheOtherOneIsNotUsed) {
  rpc_port_disconnect(port());

  EXPECT_TRUE(bothAreTold());
}

TEST_P(TheEndOfOnePort, IsToldAfterWhatTravelsOnTheOther) {
  stub.onDisconnected = [this] { stub.texts.emplace_back("end"); };
  proxy.onDisconnected = [this] { proxy.texts.emplace_back("end"); };

  rpc_port_disconnect(port());
  sendOnTheOther("message");

  EXPECT_TRUE(bothAreTold());
  EXPECT_THAT(receivedOnTheOther(), ElementsAre("message", "end"));
}

TEST_P(TheEndOfOnePort, LeavesNothingToEndButTheOther) {
  rpc_port_disconnect(port());

  rpc_port_disconnect(GetParam().isMain ? stub.port(RPC_PORT_PORT_CALLBACK)
                                        : stub.port(RPC_PORT_PORT_MAIN));

  EXPECT_TRUE(bothAreTold());
}

TEST_F(AnEnd, OfOnePortLetsTheConnectedHandlerSendOnTheOther) {
  std::vector<std::string> events;
  stub.onReceived = [&](rpc_port_h port) {
    events.push_back(takeText(port));
    return 0;
  };
  stub.onDisconnected = [&] { events.emplace_back("end"); };
  ProxyEnd other;
  other.onConnected = [&] {
    rpc_port_disconnect(other.port(RPC_PORT_PORT_CALLBACK));
    sendText(other.port(RPC_PORT_PORT_MAIN), "message");
  };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1 && other.endings == 1; }));
  EXPECT_THAT(events, ElementsAre("message", "end"));
}

TEST_F(AnEnd, OfOnePortLastsAsLongAsTheOtherIsUsed) {
  rpc_port_disconnect(stub.port(RPC_PORT_PORT_CALLBACK));
  const double enough = ecore_time_get() + 1.3;

  while (ecore_time_get() < enough) {
    const std::size_t before = stub.texts.size();
    ASSERT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), "more"), RPC_PORT_ERROR_NONE);
    ASSERT_TRUE(runUntil([&] { return stub.texts.size() > before; }));
  }

  EXPECT_THAT(stub.ended, IsEmpty());
}

TEST_F(AnEnd, OfOnePortDoesNotWaitForAPeerThatNeverReacts) {
  const auto main = RawSocket::connectTo(socketPath(kPort));
  const auto callback = RawSocket::connectTo(socketPath(kPort));
  main->send(frame(kHello, hello(0, "i", "org.example.raw")));
  callback->send(frame(kHello, hello(1, "i", "org.example.raw")));
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2; }));

  rpc_port_disconnect(stub.port(RPC_PORT_PORT_CALLBACK, 1));

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  main->receive();
  EXPECT_TRUE(main->hasEnded());
}

class TheDeathOf : public Runtime {};

TEST_F(TheDeathOf, AStubsProcessEndsTheProxysConnection) {
  Program peer("stub");
  ASSERT_TRUE(peer.isReady());
  ProxyEnd proxy;
  ASSERT_EQ(rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort), RPC_PORT_ERROR_NONE);

  peer.kill();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(TheDeathOf, AProxysProcessEndsTheStubsConnection) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  const std::size_t before = countDescriptors();
  Program peer("proxy");
  ASSERT_TRUE(runUntil([&] { return !stub.texts.empty(); }));

  peer.kill();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.senders, ElementsAre(Program::kAppId));
  EXPECT_EQ(countDescriptors(), before);
}

TEST_F(TheDeathOf, AStubsProcessLeavesAPortThatTheNextOneTakes) {
  Program peer("stub");
  ASSERT_TRUE(peer.isReady());
  peer.kill();

  const Program next("stub");

  EXPECT_TRUE(next.isReady());
}

} // namespace
} // namespace rpc_test
