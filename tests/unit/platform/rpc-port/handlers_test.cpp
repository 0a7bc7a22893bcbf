// SPDX-License-Identifier: Apache-2.0
// Handlers may do anything from inside a call. Run under AddressSanitizer, these say the most.
#include "support/Ends.h"

#include <Ecore.h>
#include <gmock/gmock.h>
#include <stdexcept>

namespace rpc_test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

/// Runs the loop until a handler's exception comes out of it.
bool runUntilThrown() {
  try {
    runUntil([] { return false; });
  } catch (const std::runtime_error &) {
    return true;
  }
  return false;
}

[[noreturn]] void fail() {
  throw std::runtime_error("a handler's own exception");
}

class AStubsHandler : public ConnectedEnds {
protected:
  void request(const char *text) { sendText(proxy.port(RPC_PORT_PORT_MAIN), text); }
};

TEST_F(AStubsHandler, DestroysTheStubOnAMessage) {
  stub.onReceived = [&](rpc_port_h) {
    stub.destroy();
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(AStubsHandler, DestroysTheStubAndReturnsAnErrorOnAMessage) {
  stub.onReceived = [&](rpc_port_h port) {
    takeText(port);
    stub.destroy();
    return -1;
  };

  request("one");

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(AStubsHandler, DestroysTheStubOnAConnection) {
  ProxyEnd other;
  stub.onConnected = [&] { stub.destroy(); };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1 && other.endings == 1; }));
}

TEST_F(AStubsHandler, DestroysTheStubOnAnEnd) {
  ProxyEnd other;
  other.connect();
  ASSERT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));
  stub.onDisconnected = [&] { stub.destroy(); };

  proxy.destroy();

  EXPECT_TRUE(runUntil([&] { return other.endings == 1; }));
}

TEST_F(AStubsHandler, IsTheLastOneCalledWhenItDestroysTheStub) {
  int calls = 0;
  stub.onReceived = [&](rpc_port_h) {
    stub.destroy();
    return 0;
  };
  rpc_port_stub_add_received_event_cb(
      stub.handle,
      [](const char *, const char *, rpc_port_h, void *data) {
        ++*static_cast<int *>(data);
        return 0;
      },
      &calls);

  request("one");

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
  EXPECT_EQ(calls, 0);
}

TEST_F(AStubsHandler, DestroysTheProxyThatSentTheMessage) {
  stub.onReceived = [&](rpc_port_h port) {
    proxy.destroy();
    stub.texts.push_back(takeText(port));
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.texts, ElementsAre("one", "two"));
}

TEST_F(AStubsHandler, DisconnectsBeforeItTakesTheMessage) {
  stub.onReceived = [&](rpc_port_h port) {
    rpc_port_disconnect(port);
    stub.texts.push_back(takeText(port));
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1 && proxy.endings == 1; }));
  EXPECT_THAT(stub.texts, ElementsAre("error -5"));
}

TEST_F(AStubsHandler, DisconnectsOnAConnection) {
  ProxyEnd other;
  stub.onConnected = [&] { rpc_port_disconnect(stub.port(RPC_PORT_PORT_MAIN, 1)); };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return other.endings == 1 && stub.ended.size() == 1; }));
}

TEST_F(AStubsHandler, SendsOnAConnection) {
  ProxyEnd other;
  stub.onConnected = [&] { sendText(stub.port(RPC_PORT_PORT_CALLBACK, 1), "welcome"); };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return !other.texts.empty(); }));
  EXPECT_THAT(other.texts, ElementsAre("welcome"));
}

TEST_F(AStubsHandler, ConnectsOnAMessage) {
  ProxyEnd other;
  stub.onReceived = [&](rpc_port_h port) {
    takeText(port);
    return other.connect();
  };

  request("connect");

  EXPECT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));
}

TEST_F(AStubsHandler, TakesSeveralMessagesAtOnce) {
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    stub.texts.push_back(takeText(port));
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_THAT(stub.texts, ElementsAre("one", "two"));
}

TEST_F(AStubsHandler, RunsTheLoopOnAMessageThatItHasTaken) {
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      runUntil([&] { return stub.texts.size() == 2; });
    }
    return 0;
  };

  request("outer");
  request("inner");

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_THAT(stub.texts, ElementsAre("outer", "inner"));
}

TEST_F(AStubsHandler, IsNotCalledForTheMessageThatItStillHasAtHand) {
  int depth = 0;
  int deepest = 0;
  stub.onReceived = [&](rpc_port_h port) {
    deepest = std::max(deepest, ++depth);
    settle();
    stub.texts.push_back(takeText(port));
    --depth;
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_EQ(deepest, 1);
}

TEST_F(AStubsHandler, RunsTheLoopWhileItsConnectionEnds) {
  stub.onReceived = [&](rpc_port_h port) {
    takeText(port);
    proxy.destroy();
    runUntil([&] { return stub.ended.size() == 1; });
    return 0;
  };

  request("one");

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(AStubsHandler, DestroysTheStubInALoopOfItsOwn) {
  stub.onReceived = [&](rpc_port_h port) {
    takeText(port);
    ecore_job_add([](void *data) { static_cast<StubEnd *>(data)->destroy(); }, &stub);
    runUntil([&] { return proxy.endings == 1; });
    return 0;
  };

  request("one");
  request("two");

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(AStubsHandler, ThrowsOnAMessageAndGetsTheNext) {
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      fail();
    }
    return 0;
  };
  request("one");
  request("two");

  EXPECT_TRUE(runUntilThrown());

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_THAT(stub.texts, ElementsAre("one", "two"));
}

TEST_F(AStubsHandler, ThrowsBeforeItTakesAMessageAndGetsItAgain) {
  bool throws = true;
  stub.onReceived = [&](rpc_port_h port) {
    if (std::exchange(throws, false)) {
      fail();
    }
    stub.texts.push_back(takeText(port));
    return 0;
  };
  request("one");

  EXPECT_TRUE(runUntilThrown());

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
}

TEST_F(AStubsHandler, ThrowsOnAConnectionThatThenWorks) {
  ProxyEnd other;
  stub.onConnected = [] { fail(); };
  other.connect();

  EXPECT_TRUE(runUntilThrown());

  ASSERT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));
  sendText(other.port(RPC_PORT_PORT_MAIN), "still there");
  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
}

TEST_F(AStubsHandler, ThrowsOnAnEndThatIsToldOnce) {
  stub.onDisconnected = [] { fail(); };
  proxy.destroy();

  EXPECT_TRUE(runUntilThrown());

  settle();
  EXPECT_THAT(stub.ended, SizeIs(1));
}

class AProxysHandler : public ConnectedEnds {
protected:
  void callBack(const char *text) { sendText(stub.port(RPC_PORT_PORT_CALLBACK), text); }
};

TEST_F(AProxysHandler, DestroysTheProxyOnAMessage) {
  proxy.onReceived = [&] { proxy.destroy(); };

  callBack("one");
  callBack("two");

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(AProxysHandler, DestroysTheProxyOnAConnection) {
  ProxyEnd other;
  other.onConnected = [&] { other.destroy(); };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(AProxysHandler, DestroysTheProxyOnAnEnd) {
  proxy.onDisconnected = [&] { proxy.destroy(); };

  stub.destroy();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(AProxysHandler, DestroysTheProxyOnARejection) {
  proxy.onRejected = [&] { proxy.destroy(); };

  proxy.connect("nobody");

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1 && stub.ended.size() == 1; }));
}

TEST_F(AProxysHandler, ConnectsAgainOnAnEnd) {
  proxy.onDisconnected = [&] { proxy.connect(); };

  rpc_port_disconnect(stub.port(RPC_PORT_PORT_MAIN));

  EXPECT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 2; }));
}

TEST_F(AProxysHandler, ConnectsAgainOnARejection) {
  proxy.onRejected = [&] { proxy.connect(); };

  proxy.connect("nobody");

  EXPECT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 2; }));
}

TEST_F(AProxysHandler, ConnectsAgainOnAConnection) {
  ProxyEnd other;
  other.onConnected = [&] {
    if (other.mainPorts.size() < 3) {
      other.connect();
    }
  };

  other.connect();

  EXPECT_TRUE(runUntil([&] { return other.mainPorts.size() == 3; }));
}

TEST_F(AProxysHandler, DisconnectsOnAMessage) {
  proxy.onReceived = [&] { rpc_port_disconnect(proxy.port(RPC_PORT_PORT_MAIN)); };

  callBack("one");
  callBack("two");

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1 && stub.ended.size() == 1; }));
}

TEST_F(AProxysHandler, AnswersOnAMessage) {
  proxy.onReceived = [&] {
    sendText(proxy.port(RPC_PORT_PORT_MAIN), takeText(proxy.port(RPC_PORT_PORT_CALLBACK)));
  };

  callBack("ping");

  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  EXPECT_THAT(stub.texts, ElementsAre("ping"));
}

TEST_F(AProxysHandler, ThrowsOnAConnectionThatThenWorks) {
  ProxyEnd other;
  other.onConnected = [] { fail(); };
  other.connect();

  EXPECT_TRUE(runUntilThrown());

  sendText(other.port(RPC_PORT_PORT_MAIN), "still there");
  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
}

TEST_F(AProxysHandler, ThrowsOnARejectionThatIsToldOnce) {
  proxy.onRejected = [] { fail(); };
  proxy.connect("nobody");

  EXPECT_TRUE(runUntilThrown());

  settle();
  EXPECT_EQ(proxy.rejections, 1);
}

TEST_F(AProxysHandler, ThrowsOnAMessageAndGetsTheNext) {
  proxy.onReceived = [&] {
    proxy.texts.push_back(takeText(proxy.port(RPC_PORT_PORT_CALLBACK)));
    if (proxy.texts.size() == 1) {
      fail();
    }
  };
  callBack("one");
  callBack("two");

  EXPECT_TRUE(runUntilThrown());

  EXPECT_TRUE(runUntil([&] { return proxy.texts.size() == 2; }));
}

} // namespace
} // namespace rpc_test
