// SPDX-License-Identifier: Apache-2.0
// Ports of an application that runs a GMainLoop of its own, or GLib's loop and Ecore's in each
// other.
#include "glib/EcorePolling.h"
#include "support/Ends.h"

#include <Ecore.h>
#include <chrono>
#include <glib.h>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace rpc_test {
namespace {

using testing::ElementsAre;

constexpr unsigned kTickMilliseconds = 5;
constexpr int kMostTicks = 6000;

/// Runs GLib's loop until the condition holds. @return false after a generous time.
bool runGLibUntil(const std::function<bool()> &condition) {
  int ticks = 0;
  const auto onTick = [](gpointer data) -> gboolean {
    ++*static_cast<int *>(data);
    return G_SOURCE_CONTINUE;
  };
  const guint tick = g_timeout_add(kTickMilliseconds, onTick, &ticks);
  bool holds = condition();
  while (!holds && ticks < kMostTicks) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_remove(tick);
  return holds;
}

class PortsUnderGLib : public Runtime {
protected:
  void connect() {
    ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
    ASSERT_EQ(proxy.connect(), RPC_PORT_ERROR_NONE);
    ASSERT_TRUE(runGLibUntil([this] { return isConnected(); }));
  }
  bool isConnected() const { return !stub.instances.empty() && !proxy.mainPorts.empty(); }

  StubEnd stub;
  ProxyEnd proxy;
};

TEST_F(PortsUnderGLib, Connect) {
  connect();

  EXPECT_THAT(stub.senders, ElementsAre(kAppId));
}

TEST_F(PortsUnderGLib, ReceiveBothWays) {
  connect();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");
  EXPECT_TRUE(runGLibUntil([this] { return !stub.texts.empty(); }));
  sendText(stub.port(RPC_PORT_PORT_CALLBACK), "answer");
  EXPECT_TRUE(runGLibUntil([this] { return !proxy.texts.empty(); }));

  EXPECT_THAT(stub.texts, ElementsAre("request"));
  EXPECT_THAT(proxy.texts, ElementsAre("answer"));
}

TEST_F(PortsUnderGLib, SendMoreThanASocketTakesAtOnce) {
  connect();
  const std::string large(std::size_t{8} << 20, 'x');

  sendText(proxy.port(RPC_PORT_PORT_MAIN), large);

  ASSERT_TRUE(runGLibUntil([this] { return !stub.texts.empty(); }));
  EXPECT_EQ(stub.texts.front().size(), large.size());
}

TEST_F(PortsUnderGLib, AreToldOfTheOtherSidesEnd) {
  connect();

  proxy.destroy();

  EXPECT_TRUE(runGLibUntil([this] { return !stub.ended.empty(); }));
}

TEST_F(PortsUnderGLib, AreRejectedWhereNobodyListens) {
  proxy.connect();

  EXPECT_TRUE(runGLibUntil([this] { return proxy.rejections == 1; }));
}

TEST_F(PortsUnderGLib, ReceiveInAGMainLoopInsideAHandler) {
  bool wasInside = false;
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      wasInside = runGLibUntil([&] { return stub.texts.size() == 2; });
    }
    return 0;
  };
  connect();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "outer");
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "inner");
  EXPECT_TRUE(runGLibUntil([&] { return wasInside; }));

  EXPECT_THAT(stub.texts, ElementsAre("outer", "inner"));
}

TEST_F(PortsUnderGLib, ReceiveInAnEcoreLoopInsideAHandler) {
  bool wasInside = false;
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      wasInside = runUntil([&] { return stub.texts.size() == 2; });
    }
    return 0;
  };
  connect();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "outer");
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "inner");
  EXPECT_TRUE(runGLibUntil([&] { return wasInside; }));

  EXPECT_THAT(stub.texts, ElementsAre("outer", "inner"));
}

TEST_F(PortsUnderGLib, ReceiveInAGMainLoopInsideAnEcoreHandler) {
  bool wasInside = false;
  stub.onReceived = [&](rpc_port_h port) {
    stub.texts.push_back(takeText(port));
    if (stub.texts.size() == 1) {
      wasInside = runGLibUntil([&] { return stub.texts.size() == 2; });
    }
    return 0;
  };
  connect();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "outer");
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "inner");
  EXPECT_TRUE(runUntil([&] { return wasInside; }));

  EXPECT_THAT(stub.texts, ElementsAre("outer", "inner"));
}

TEST_F(PortsUnderGLib, MayAllBeDestroyedByAHandlerAndMadeAgain) {
  stub.onReceived = [this](rpc_port_h /*port*/) {
    stub.destroy();
    proxy.destroy();
    stub.ended.push_back("destroyed");
    return 0;
  };
  connect();
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "end");
  ASSERT_TRUE(runGLibUntil([this] { return !stub.ended.empty(); }));

  StubEnd nextStub;
  ProxyEnd nextProxy;
  nextStub.listen();
  nextProxy.connect();

  EXPECT_TRUE(runGLibUntil([&] { return !nextProxy.mainPorts.empty(); }));
}

TEST_F(PortsUnderGLib, AreServedOnlyByTheThreadThatMadeThem) {
  std::thread::id thread;
  stub.onConnected = [&] { thread = std::this_thread::get_id(); };
  GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
  std::thread other([loop] { g_main_loop_run(loop); });
  while (g_main_loop_is_running(loop) == FALSE) {
    std::this_thread::yield();
  }

  stub.listen();
  proxy.connect();
  EXPECT_TRUE(runUntil([this] { return isConnected(); }));

  g_main_loop_quit(loop);
  other.join();
  g_main_loop_unref(loop);
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(PortsUnderGLib, AreTheParentsAloneAfterAFork) {
  connect();
  const pid_t child = fork();
  if (child == 0) {
    // Whatever opens gets the numbers of the closed ports, and must not be taken for them.
    int ends[2] = {-1, -1};
    bool isQuiet = pipe(ends) == 0 && write(ends[1], "!", 1) == 1;
    for (int turn = 0; turn < 20; ++turn) {
      g_main_context_iteration(nullptr, FALSE);
    }
    isQuiet = isQuiet && stub.ended.empty() && proxy.endings == 0;
    StubEnd own("of-the-child");
    _exit(isQuiet && own.listen() == RPC_PORT_ERROR_NONE ? EXIT_SUCCESS : EXIT_FAILURE);
  }

  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "still here");
  EXPECT_TRUE(runGLibUntil([this] { return !stub.texts.empty(); }));
  EXPECT_EQ(status, 0);
}

TEST_F(PortsUnderGLib, LeaveNoSourceBehind) {
  connect();
  proxy.destroy();
  stub.destroy();

  EXPECT_FALSE(g_main_context_pending(nullptr));
  EXPECT_FALSE(g_main_context_iteration(nullptr, FALSE));
}

using PortsUnderGLibDeathTest = PortsUnderGLib;

TEST_F(PortsUnderGLibDeathTest, EndTheProcessWithAHandlersException) {
  const auto receive = [] {
    // In the forked process: ports are not inherited.
    StubEnd own;
    ProxyEnd other;
    own.onReceived = [](rpc_port_h) -> int { throw std::runtime_error("of the handler"); };
    own.listen();
    other.onConnected = [&other] { sendText(other.port(RPC_PORT_PORT_MAIN), "request"); };
    other.connect();
    runGLibUntil([] { return false; });
  };

  EXPECT_EXIT(receive(), testing::KilledBySignal(SIGABRT), "of the handler");
}

/// As under an application's main function: Ecore's loop, which polls GLib's context.
class PortsUnderBoth : public PortsUnderGLib {
protected:
  PortsUnderBoth() { platform::glib::startEcorePolling(); }
  ~PortsUnderBoth() override { platform::glib::stopEcorePolling(); }

  void connect() {
    stub.listen();
    proxy.connect();
    ASSERT_TRUE(runUntil([this] { return isConnected(); }));
  }
};

TEST_F(PortsUnderBoth, ReceiveEachMessageOnce) {
  connect();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "one");
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "two");
  EXPECT_TRUE(runUntil([this] { return stub.texts.size() == 2; }));
  settle();

  EXPECT_THAT(stub.texts, ElementsAre("one", "two"));
}

TEST_F(PortsUnderBoth, LetAHandlersExceptionPassThroughEcoreAlone) {
  connect();
  int depth = -1;
  stub.onReceived = [&](rpc_port_h port) -> int {
    stub.texts.push_back(takeText(port));
    depth = g_main_depth();
    throw std::runtime_error("of the handler");
  };
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");

  EXPECT_THROW(runUntil([] { return false; }), std::runtime_error);
  EXPECT_EQ(depth, 0);
}

TEST_F(PortsUnderBoth, ReceiveInAGMainLoopInsideAGLibCallback) {
  connect();
  bool wasInside = false;
  std::function<void()> callback = [&] {
    sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");
    wasInside = runGLibUntil([this] { return !stub.texts.empty(); });
  };
  const auto onIdle = [](gpointer data) -> gboolean {
    (*static_cast<std::function<void()> *>(data))();
    return G_SOURCE_REMOVE;
  };
  g_idle_add(onIdle, &callback);

  EXPECT_TRUE(runUntil([&] { return wasInside; }));
}

TEST_F(PortsUnderBoth, ReceiveInAnEcoreLoopInsideAGLibCallback) {
  connect();
  bool wasInside = false;
  std::function<void()> callback = [&] {
    sendText(proxy.port(RPC_PORT_PORT_MAIN), "request");
    wasInside = runUntil([this] { return !stub.texts.empty(); });
  };
  const auto onIdle = [](gpointer data) -> gboolean {
    (*static_cast<std::function<void()> *>(data))();
    return G_SOURCE_REMOVE;
  };
  g_idle_add(onIdle, &callback);

  EXPECT_TRUE(runUntil([&] { return wasInside; }));
}

} // namespace
} // namespace rpc_test
