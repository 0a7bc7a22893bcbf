// SPDX-License-Identifier: Apache-2.0
#include "support/Ends.h"
#include "support/Program.h"
#include "support/RawSocket.h"

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <vector>

namespace rpc_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Connecting : public Runtime {};

TEST_F(Connecting, RaisesConnectedOnBothSides) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);

  const int result = proxy.connect();

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return !proxy.mainPorts.empty(); }));
  EXPECT_THAT(stub.senders, ElementsAre(kAppId));
  EXPECT_EQ(proxy.mainPorts.at(0), proxy.port(RPC_PORT_PORT_MAIN));
}

TEST_F(Connecting, RaisesNothingInsideTheCall) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);

  proxy.connect();
  proxy.connect("nobody");

  EXPECT_THAT(proxy.mainPorts, IsEmpty());
  EXPECT_EQ(proxy.rejections, 0);
}

TEST_F(Connecting, IsRejectedWhereNobodyListens) {
  ProxyEnd proxy;

  const int result = proxy.connect();

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
  EXPECT_THAT(proxy.mainPorts, IsEmpty());
}

TEST_F(Connecting, IsRejectedByASocketFileThatNobodyListensOn) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  stub.destroy();
  RawSocket::listenAt(socketPath(kPort)).reset();
  ASSERT_TRUE(std::filesystem::exists(socketPath(kPort)));
  ProxyEnd proxy;

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(Connecting, DoesNotFollowALinkToASocket) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  std::filesystem::create_symlink(socketPath(kPort), socketPath("link"));

  proxy.connect("link");

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(Connecting, TellsTheProgramsNameWhereThereIsNoAppId) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  unsetenv("AUL_APPID");

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return !stub.senders.empty(); }));
  EXPECT_THAT(stub.senders, ElementsAre(program_invocation_short_name));
}

TEST_F(Connecting, GivesEachConnectionOfAProxyItsOwnInstance) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);

  proxy.connect();
  proxy.connect();

  ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 2 && stub.instances.size() == 2; }));
  EXPECT_NE(stub.instances.at(0), stub.instances.at(1));
}

TEST_F(Connecting, MakesTheNewestConnectionsPortsThoseOfTheProxy) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  proxy.connect();
  ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 1; }));

  proxy.connect();

  ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 2; }));
  EXPECT_EQ(proxy.port(RPC_PORT_PORT_MAIN), proxy.mainPorts.at(1));
  EXPECT_NE(proxy.mainPorts.at(0), proxy.mainPorts.at(1));
}

TEST_F(Connecting, CallsEveryHandlerInTheOrderInWhichTheyWereAdded) {
  std::vector<int> calls;
  StubEnd stub;
  ProxyEnd proxy;
  rpc_port_stub_add_connected_event_cb(
      stub.handle,
      [](const char *, const char *, void *list) {
        static_cast<std::vector<int> *>(list)->push_back(1);
      },
      &calls);
  rpc_port_stub_add_connected_event_cb(
      stub.handle,
      [](const char *, const char *, void *list) {
        static_cast<std::vector<int> *>(list)->push_back(2);
      },
      &calls);
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return !proxy.mainPorts.empty(); }));
  EXPECT_THAT(calls, ElementsAre(1, 2));
}

TEST_F(Connecting, GoesOnWhenTheProxyIsDestroyedMeanwhile) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  {
    ProxyEnd proxy;
    proxy.connect();
  }
  ProxyEnd other;

  other.connect();

  EXPECT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));
}

TEST_F(Connecting, IsRejectedWhenTheStubClosesWithoutAWelcome) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  stub.destroy();
  const auto listener = RawSocket::listenAt(socketPath(kPort));
  ProxyEnd proxy;
  proxy.connect();

  listener->accept().reset();

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(Connecting, IsRejectedByAWelcomeOfAnotherVersion) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  stub.destroy();
  const auto listener = RawSocket::listenAt(socketPath(kPort));
  ProxyEnd proxy;
  proxy.connect();
  const auto main = listener->accept();

  main->send(frame(kWelcome, "RPCP" + bytes(std::uint32_t{2})));

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(Connecting, IsRejectedByAMessageBeforeTheWelcome) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  stub.destroy();
  const auto listener = RawSocket::listenAt(socketPath(kPort));
  ProxyEnd proxy;
  proxy.connect();
  const auto main = listener->accept();

  main->send(frame(kParcel, parcel("")));

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(Connecting, WaitsWhileTheStubsBacklogIsFull) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  stub.destroy();
  const auto listener = RawSocket::listenAt(socketPath(kPort));
  std::vector<std::unique_ptr<RawSocket>> crowd;
  for (auto one = RawSocket::connectTo(socketPath(kPort)); one;
       one = RawSocket::connectTo(socketPath(kPort))) {
    crowd.push_back(std::move(one));
  }
  ProxyEnd proxy;
  proxy.connect();
  settle();
  ASSERT_EQ(proxy.rejections, 0);

  const auto welcome = frame(kWelcome, "RPCP" + bytes(std::uint32_t{1}));
  std::vector<std::unique_ptr<RawSocket>> accepted;
  const auto acceptOne = [&] {
    if (auto one = listener->accept()) {
      one->send(welcome);
      accepted.push_back(std::move(one));
    }
  };

  EXPECT_TRUE(runUntil([&] {
    acceptOne();
    return proxy.mainPorts.size() == 1;
  }));
}

TEST_F(Connecting, RefusesNamesThatAreNoFileNames) {
  ProxyEnd proxy;

  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, "../other", kPort),
            RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, "", kPort), RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, kAppId, ".."), RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, kAppId, std::string(81, 'p').c_str()),
            RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, nullptr, kPort), RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(rpc_port_proxy_connect(proxy.handle, kAppId, nullptr),
            RPC_PORT_ERROR_INVALID_PARAMETER);
}

/// A command that starts a program in a PID namespace of its own, or nothing.
std::vector<std::string> pidNamespace() {
  for (const std::string user : {"", "--user --map-root-user "}) {
    if (std::system(("unshare " + user + "--pid --fork true 2>/dev/null").c_str()) == 0) {
      std::vector<std::string> command{"unshare", "--pid", "--fork", "--kill-child"};
      if (!user.empty()) {
        command.insert(command.end(), {"--user", "--map-root-user"});
      }
      return command;
    }
  }
  return {};
}

TEST_F(Connecting, SucceedsAcrossPidNamespaces) {
  const std::vector<std::string> launcher = pidNamespace();
  if (launcher.empty()) {
    GTEST_SKIP() << "this user may not create a PID namespace";
  }
  const Program peer("stub", launcher); // To whom this process has no process id.
  ASSERT_TRUE(peer.isReady());
  ProxyEnd proxy;

  const int result = rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort);

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "hello");
  EXPECT_EQ(takeText(proxy.port(RPC_PORT_PORT_MAIN)), "hello");
}

class ConnectingAtOnce : public Runtime {};

TEST_F(ConnectingAtOnce, HasRaisedConnectedWhenItReturns) {
  const Program peer("stub");
  ASSERT_TRUE(peer.isReady());
  ProxyEnd proxy;

  const int result = rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort);

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_THAT(proxy.mainPorts, ElementsAre(proxy.port(RPC_PORT_PORT_MAIN)));
}

TEST_F(ConnectingAtOnce, FailsWhereNobodyListens) {
  ProxyEnd proxy;

  const int result = rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort);

  EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR);
  settle();
  EXPECT_EQ(proxy.rejections, 0);
}

TEST_F(ConnectingAtOnce, IsDeniedADirectoryThatIsOpenToOthers) {
  StubEnd stub;
  ProxyEnd proxy;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  std::filesystem::permissions(directory() + "/rpc-port", std::filesystem::perms(0777));

  const int result = rpc_port_proxy_connect_sync(proxy.handle, kAppId, kPort);

  EXPECT_EQ(result, RPC_PORT_ERROR_PERMISSION_DENIED);
}

TEST_F(ConnectingAtOnce, LetsAnExceptionOfTheHandlerThrough) {
  const Program peer("stub");
  ASSERT_TRUE(peer.isReady());
  ProxyEnd proxy;
  proxy.onConnected = [] { throw std::bad_alloc(); };

  EXPECT_THROW(rpc_port_proxy_connect_sync(proxy.handle, Program::kAppId, kPort), std::bad_alloc);

  EXPECT_NE(proxy.port(RPC_PORT_PORT_MAIN), nullptr);
}

class ConnectingAtOnceInOneProcess : public Runtime {
protected:
  void SetUp() override { ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE); }
  int connect() { return rpc_port_proxy_connect_sync(proxy.handle, kAppId, kPort); }

  StubEnd stub;
  ProxyEnd proxy;
};

TEST_F(ConnectingAtOnceInOneProcess, HasRaisedConnectedOnBothSidesWhenItReturns) {
  EXPECT_EQ(connect(), RPC_PORT_ERROR_NONE);

  EXPECT_THAT(proxy.mainPorts, ElementsAre(proxy.port(RPC_PORT_PORT_MAIN)));
  EXPECT_THAT(stub.senders, ElementsAre(kAppId));
}

TEST_F(ConnectingAtOnceInOneProcess, MakesAConnectionThatCarriesMessagesBothWays) {
  ASSERT_EQ(connect(), RPC_PORT_ERROR_NONE);

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "there");
  sendText(stub.port(RPC_PORT_PORT_CALLBACK), "and back");

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty() && !proxy.texts.empty(); }));
  EXPECT_THAT(stub.texts, ElementsAre("there"));
  EXPECT_THAT(proxy.texts, ElementsAre("and back"));
}

TEST_F(ConnectingAtOnceInOneProcess, SucceedsSeveralTimes) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(connect(), RPC_PORT_ERROR_NONE);
  }

  EXPECT_EQ(stub.instances.size(), 3U);
  EXPECT_EQ(proxy.mainPorts.size(), 3U);
}

TEST_F(ConnectingAtOnceInOneProcess, SucceedsBehindMoreThanAreAcceptedPerTurn) {
  std::vector<std::unique_ptr<ProxyEnd>> others(40);
  for (auto &other : others) {
    other = std::make_unique<ProxyEnd>();
    ASSERT_EQ(other->connect(), RPC_PORT_ERROR_NONE);
  }

  EXPECT_EQ(connect(), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(stub.instances.size(), 41U);
}

TEST_F(ConnectingAtOnceInOneProcess, SucceedsFromInsideAHandlerOfTheStub) {
  ProxyEnd first;
  int result = -1;
  stub.onConnected = [&] {
    if (stub.instances.size() == 1) {
      result = connect();
    }
  };
  ASSERT_EQ(first.connect(), RPC_PORT_ERROR_NONE);

  EXPECT_TRUE(runUntil([&] { return first.mainPorts.size() == 1; }));

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_EQ(stub.instances.size(), 2U);
}

TEST_F(ConnectingAtOnceInOneProcess, FailsAtAPortThatNobodyListensOn) {
  EXPECT_EQ(rpc_port_proxy_connect_sync(proxy.handle, kAppId, "another"), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THAT(stub.senders, IsEmpty());
}

TEST_F(ConnectingAtOnceInOneProcess, EndsWithAStubThatItsHandlerDestroys) {
  stub.onConnected = [&] { stub.destroy(); };

  EXPECT_EQ(connect(), RPC_PORT_ERROR_NONE); // the welcome was on its way already

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(ConnectingAtOnceInOneProcess, FailsWhenAHandlerOfTheStubDestroysTheProxy) {
  stub.onConnected = [&] { proxy.destroy(); };

  EXPECT_EQ(connect(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THAT(proxy.mainPorts, IsEmpty());
  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(ConnectingAtOnceInOneProcess, LetsAnExceptionOfTheStubsHandlerThrough) {
  stub.onConnected = [] { throw std::runtime_error("no more"); };

  EXPECT_THROW(connect(), std::runtime_error);

  EXPECT_THAT(proxy.mainPorts, IsEmpty());
  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(ConnectingAtOnceInOneProcess, LeavesTheOtherConnectionsToTheLoop) {
  ProxyEnd other;
  ASSERT_EQ(connect(), RPC_PORT_ERROR_NONE);
  ASSERT_EQ(other.connect(), RPC_PORT_ERROR_NONE);
  EXPECT_THAT(other.mainPorts, IsEmpty());

  EXPECT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));

  EXPECT_EQ(stub.instances.size(), 2U);
}

} // namespace
} // namespace rpc_test
