// SPDX-License-Identifier: Apache-2.0
// What happens when something runs out, or ends up where it should not.
#include "support/Ends.h"
#include "support/Program.h"
#include "support/RawSocket.h"

#include <Ecore.h>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rpc_test {
namespace {

using testing::IsEmpty;

/// Sets how many descriptors the process can have, and takes that back.
class DescriptorLimit {
public:
  explicit DescriptorLimit(rlim_t limit) {
    getrlimit(RLIMIT_NOFILE, &_before);
    const rlimit now = {limit, _before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &now);
  }
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &_before); }
  DescriptorLimit(const DescriptorLimit &) = delete;
  DescriptorLimit &operator=(const DescriptorLimit &) = delete;

private:
  rlimit _before = {};
};

/// A turn of an idle loop lasts until something happens; a busy loop has thousands meanwhile.
bool isLoopIdle() {
  bool isDue = false;
  int turns = 0;
  ecore_timer_add(
      0.05,
      [](void *data) -> Eina_Bool {
        *static_cast<bool *>(data) = true;
        return ECORE_CALLBACK_CANCEL;
      },
      &isDue);

  return runUntil([&] { return ++turns > 0 && isDue; }) && turns < 100;
}

class RunningOutOfDescriptors : public Runtime {
protected:
  /// UndefinedBehaviorSanitizer needs descriptors the first time that it sees a type.
  void SetUp() override {
    ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
    ProxyEnd proxy;
    proxy.connect();
    proxy.connect("nobody");
    ASSERT_TRUE(runUntil([&] { return !proxy.mainPorts.empty() && proxy.rejections == 1; }));
    proxy.destroy();
    ASSERT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  }

  StubEnd stub;
};

TEST_F(RunningOutOfDescriptors, MakesConnectionsWaitUntilThereAreSome) {
  const auto main = RawSocket::connectTo(socketPath(kPort));
  const auto callback = RawSocket::connectTo(socketPath(kPort));
  main->send(frame(kHello, hello(0, "i", "org.example.raw")));
  callback->send(frame(kHello, hello(1, "i", "org.example.raw")));
  {
    const DescriptorLimit none(3);
    settle();
  }
  EXPECT_EQ(stub.instances.size(), 1U);
  EXPECT_FALSE(main->hasEnded());

  EXPECT_TRUE(runUntil([&] { return stub.instances.size() == 2; }));
}

/// As many files as an application may want to open at once; those that could be opened are closed.
int countOpenableFiles() {
  std::vector<int> files;
  for (int file = open("/dev/null", O_RDONLY | O_CLOEXEC); file >= 0;
       file = open("/dev/null", O_RDONLY | O_CLOEXEC)) {
    files.push_back(file);
  }
  for (const int file : files) {
    close(file);
  }
  return static_cast<int>(files.size());
}

TEST_F(RunningOutOfDescriptors, LeavesTheApplicationSomeWhileConnectionsWait) {
  std::vector<std::unique_ptr<RawSocket>> crowd;
  for (int i = 0; i < 60; ++i) {
    crowd.push_back(RawSocket::connectTo(socketPath(kPort)));
    ASSERT_NE(crowd.back(), nullptr);
    crowd.back()->send(
        frame(kHello, hello(i % 2 == 0 ? 0 : 1, std::to_string(i / 2), "org.example.raw")));
  }
  const DescriptorLimit few(static_cast<rlim_t>(countDescriptors()) + 40);

  EXPECT_TRUE(runUntil([&] { return stub.instances.size() >= 10; }));
  settle();

  EXPECT_GE(countOpenableFiles(), 8);
  EXPECT_TRUE(isLoopIdle());
}

TEST_F(RunningOutOfDescriptors, LeavesTheApplicationSomeWhicheverNumbersAreTaken) {
  const auto used = static_cast<rlim_t>(countDescriptors());
  const DescriptorLimit few(used + 40);
  const int high = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, static_cast<int>(used) + 30);
  std::vector<std::unique_ptr<RawSocket>> crowd;
  for (auto one = RawSocket::connectTo(socketPath(kPort)); one && crowd.size() < 20;
       one = RawSocket::connectTo(socketPath(kPort))) {
    crowd.push_back(std::move(one));
  }
  settle();

  EXPECT_GE(countOpenableFiles(), 8);
  close(high);
}

TEST_F(RunningOutOfDescriptors, LeavesTheLoopIdle) {
  const auto main = RawSocket::connectTo(socketPath(kPort));
  const DescriptorLimit none(3);
  settle();

  EXPECT_TRUE(isLoopIdle());
}

TEST_F(RunningOutOfDescriptors, RejectsAProxysConnection) {
  ProxyEnd proxy;
  {
    const DescriptorLimit none(3);
    proxy.connect();
  }

  EXPECT_TRUE(runUntil([&] { return proxy.rejections == 1; }));
}

TEST_F(RunningOutOfDescriptors, KeepsNoProxyOfTheProcessFromConnectingAtOnceWhenItIsOver) {
  const auto other = RawSocket::connectTo(socketPath(kPort));
  ProxyEnd proxy;
  {
    const DescriptorLimit none(3);
    settle();
  }

  EXPECT_EQ(rpc_port_proxy_connect_sync(proxy.handle, kAppId, kPort), RPC_PORT_ERROR_NONE);
}

TEST_F(Runtime, ListensAfterAnEarlierStubFoundNoDescriptors) {
  rpc_port_stub_h first = nullptr;
  {
    const DescriptorLimit none(3);
    ASSERT_EQ(rpc_port_stub_create(&first, "first"), RPC_PORT_ERROR_NONE);
    ASSERT_EQ(rpc_port_stub_listen(first), RPC_PORT_ERROR_IO_ERROR);
  }
  StubEnd second;

  EXPECT_EQ(second.listen(), RPC_PORT_ERROR_NONE);

  rpc_port_stub_destroy(first);
}

class APeerThatDoesNotRead : public ConnectedEnds {};

TEST_F(APeerThatDoesNotRead, IsDisconnectedAtTheBoundAndNotBefore) {
  const rpc_port_h port = proxy.port(RPC_PORT_PORT_MAIN);
  const std::string text(std::size_t{1} << 20, 'x');
  int sent = 0;

  while (sent < 100 && sendText(port, text) == RPC_PORT_ERROR_NONE) {
    ++sent;
  }

  EXPECT_GE(sent, 15);
  EXPECT_LE(sent, 18);
  EXPECT_EQ(proxy.endings, 0);
  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

TEST_F(APeerThatDoesNotRead, KeepsNobodyElseFromBeingServed) {
  const auto main = RawSocket::connectTo(socketPath(kPort));
  const auto callback = RawSocket::connectTo(socketPath(kPort));
  main->send(frame(kHello, hello(0, "deaf", "org.example.raw")));
  callback->send(frame(kHello, hello(1, "deaf", "org.example.raw")));
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2; }));
  sendText(stub.port(RPC_PORT_PORT_CALLBACK, 1), std::string(std::size_t{8} << 20, 'x'));

  sendText(stub.port(RPC_PORT_PORT_CALLBACK, 0), "served");

  EXPECT_TRUE(runUntil([&] { return !proxy.texts.empty(); }));
  EXPECT_THAT(stub.ended, IsEmpty());
}

TEST_F(APeerThatDoesNotRead, IsSentASingleMessageOfAnyLength) {
  const std::string text(std::size_t{40} << 20, 'x');

  EXPECT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), text), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(sendText(proxy.port(RPC_PORT_PORT_MAIN), "and one more"), RPC_PORT_ERROR_NONE);

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 2; }));
  EXPECT_TRUE(stub.texts.at(0) == text);
}

TEST_F(APeerThatDoesNotRead, DoesNotKeepAStubFromBeingDestroyed) {
  sendText(stub.port(RPC_PORT_PORT_CALLBACK), std::string(std::size_t{8} << 20, 'x'));

  stub.destroy();

  EXPECT_TRUE(runUntil([&] { return proxy.endings == 1; }));
}

TEST_F(APeerThatDoesNotRead, IsNoLongerHeldInMemoryAfterItsEnd) {
  const auto heldBytes = [] {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's allocator does not tell what is held";
#endif
  if (heldBytes() == 0) {
    GTEST_SKIP() << "valgrind's allocator does not tell what is held";
  }
  const rpc_port_h port = proxy.port(RPC_PORT_PORT_MAIN);
  const std::string text(std::size_t{1} << 10, 'x');
  const std::size_t before = heldBytes();
  for (int sent = 0; sent < 15 << 10; ++sent) {
    ASSERT_EQ(sendText(port, text), RPC_PORT_ERROR_NONE);
  }
  EXPECT_GT(heldBytes(), before + (std::size_t{14} << 20));

  while (sendText(port, text) == RPC_PORT_ERROR_NONE) {
  }

  ASSERT_TRUE(runUntil([&] { return proxy.endings == 1 && stub.ended.size() == 1; }));
  stub.texts = {};
  EXPECT_LT(heldBytes(), before + (std::size_t{1} << 20));
}

class ThousandsOfConnections : public Runtime {
protected:
  static constexpr std::size_t kCount = 2000;
  static constexpr rlim_t kDescriptors = 4 * kCount + 100; // Both ends of both sockets.

  void SetUp() override {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max < kDescriptors) {
      GTEST_SKIP() << "needs " << kDescriptors << " descriptors";
    }
    ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  }

  StubEnd stub;
};

TEST_F(ThousandsOfConnections, AreServedAndLeaveNothingOpen) {
  const DescriptorLimit enough(kDescriptors);
  const std::size_t before = countDescriptors();
  ProxyEnd proxy;
  for (std::size_t i = 1; i <= kCount; ++i) {
    ASSERT_EQ(proxy.connect(), RPC_PORT_ERROR_NONE);
    ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == i; })) << i;
  }

  for (const rpc_port_h port : proxy.mainPorts) {
    ASSERT_EQ(sendText(port, "hello"), RPC_PORT_ERROR_NONE);
  }

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == kCount; }));
  proxy.destroy();
  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == kCount; }));
  EXPECT_EQ(countDescriptors(), before);
}

class AFloodOfHalfConnections : public Runtime {};

TEST_F(AFloodOfHalfConnections, DrivesOutTheOldestAndLeavesRoomForNewOnes) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  std::vector<std::unique_ptr<RawSocket>> flood;
  for (int i = 0; i < 256; ++i) {
    flood.push_back(RawSocket::connectTo(socketPath(kPort)));
    ASSERT_NE(flood.back(), nullptr);
  }
  settle();
  EXPECT_FALSE(flood.front()->hasEnded());
  ProxyEnd proxy;

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 1; }));
  EXPECT_TRUE(flood.at(0)->hasEnded());
  EXPECT_FALSE(flood.at(2)->hasEnded());
}

class AForkedChild : public ConnectedEnds {
protected:
  /// Forks a child that does something and then stays until the test has ended.
  template <typename Action>
  void forkChild(Action action) {
    int ready[2] = {};
    ASSERT_EQ(pipe(ready), 0);
    child = fork();
    if (child == 0) {
      action();
      (void)!write(ready[1], "!", 1);
      pause();
      _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    close(ready[1]);
  }

  void TearDown() override {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  pid_t child = -1;
};

TEST_F(AForkedChild, DoesNotKeepAConnectionAlive) {
  const auto main = RawSocket::connectTo(socketPath(kPort));
  const auto callback = RawSocket::connectTo(socketPath(kPort));
  main->send(frame(kHello, hello(0, "i", "org.example.raw")));
  callback->send(frame(kHello, hello(1, "i", "org.example.raw")));
  ASSERT_TRUE(runUntil([&] { return stub.instances.size() == 2; }));
  main->receive();

  forkChild([] {});
  stub.destroy();

  EXPECT_TRUE(main->hasEnded());
}

TEST_F(AForkedChild, DoesNotKeepAPortListenedOn) {
  forkChild([] {});
  stub.destroy();
  StubEnd next;

  EXPECT_EQ(next.listen(), RPC_PORT_ERROR_NONE);
}

TEST_F(AForkedChild, LeavesTheParentsConnectionAndPortAloneWhenItDestroysItsCopies) {
  forkChild([this] {
    proxy.destroy();
    stub.destroy();
  });

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "still there");
  EXPECT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  ProxyEnd other;
  other.connect();
  EXPECT_TRUE(runUntil([&] { return other.mainPorts.size() == 1; }));
}

TEST_F(AForkedChild, CannotSendOnItsParentsPorts) {
  int result = 0;
  int status = 0;
  child = fork();
  if (child == 0) {
    result = sendText(proxy.port(RPC_PORT_PORT_MAIN), "from the child");
    _exit(result == RPC_PORT_ERROR_IO_ERROR ? 0 : 1);
  }

  ASSERT_EQ(waitpid(child, &status, 0), child);

  EXPECT_EQ(status, 0);
  settle();
  EXPECT_THAT(stub.texts, IsEmpty());
}

class AForkedChildThatGoesOn : public ConnectedEnds {
protected:
  /// Forks a child that is to do something, while the parent's loop runs on: what the child says
  /// of itself through a pipe is looked at whenever something happens, its end at the latest.
  /// @return Whether the child has done it.
  template <typename Action>
  bool succeedsInChild(Action action) {
    int ends[2] = {};
    EXPECT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const pid_t child = fork();
    if (child == 0) {
      // Ecore reports descriptors that are closed and still watched: that ends the child.
      eina_log_abort_on_critical_level_set(EINA_LOG_LEVEL_ERR);
      eina_log_abort_on_critical_set(EINA_TRUE);
      (void)!write(ends[1], action() ? "y" : "n", 1);
      _exit(0);
    }
    close(ends[1]);
    char verdict = '?';
    EXPECT_TRUE(runUntil([&] { return read(ends[0], &verdict, 1) >= 0; }));
    close(ends[0]);
    waitpid(child, nullptr, 0); // In vain where Ecore has seen the child's end first.
    return verdict == 'y';
  }

  static bool isRejected() {
    ProxyEnd own;
    own.connect("nobody");
    return runUntil([&] { return own.rejections == 1; });
  }
};

TEST_F(AForkedChildThatGoesOn, ConnectsToItsParent) {
  EXPECT_TRUE(succeedsInChild([] {
    ProxyEnd own;
    own.connect();
    return runUntil([&] { return own.mainPorts.size() == 1; })
           && sendText(own.port(RPC_PORT_PORT_MAIN), "from the child") == RPC_PORT_ERROR_NONE;
  }));

  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
  EXPECT_THAT(stub.texts, testing::ElementsAre("from the child"));
}

TEST_F(AForkedChildThatGoesOn, IsRejectedWhereNobodyListens) {
  EXPECT_TRUE(succeedsInChild(isRejected));
}

TEST_F(AForkedChildThatGoesOn, IsRejectedWhenItHasResetEcoreItself) {
  EXPECT_TRUE(succeedsInChild([] {
    ecore_fork_reset();
    return isRejected();
  }));
}

TEST_F(AForkedChildThatGoesOn, ListensOnAPortOfItsOwn) {
  EXPECT_TRUE(succeedsInChild([] {
    StubEnd ownStub("child");
    ProxyEnd ownProxy;
    return ownStub.listen() == RPC_PORT_ERROR_NONE
           && ownProxy.connect("child") == RPC_PORT_ERROR_NONE
           && runUntil([&] { return ownStub.instances.size() == 1; });
  }));
}

TEST_F(AForkedChildThatGoesOn, TakesNoDescriptorForOneOfItsParentsThatHadItsNumber) {
  EXPECT_TRUE(succeedsInChild([this] {
    int ends[2] = {};
    bool isReadable = pipe(ends) == 0 && write(ends[1], "!", 1) == 1;
    for (int i = 0; i < 16; ++i) {
      isReadable = isReadable && dup(ends[0]) >= 0;
    }
    return isReadable && isRejected() && isLoopIdle() && stub.ended.empty() && proxy.endings == 0;
  }));
}

TEST_F(AForkedChildThatGoesOn, HearsNothingOfItsParentsConnections) {
  sendText(proxy.port(RPC_PORT_PORT_MAIN), "for the parent");
  proxy.connect("nobody");

  EXPECT_TRUE(succeedsInChild([this] {
    return isRejected() && stub.texts.empty() && proxy.endings == 0 && proxy.rejections == 0;
  }));

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 1 && proxy.rejections == 1; }));
}

TEST_F(AForkedChildThatGoesOn, LeavesItsParentsConnectionAlone) {
  ASSERT_TRUE(succeedsInChild(isRejected));

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "still there");

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 1; }));
}

class AnEcoreThatIsReset : public ConnectedEnds {};

TEST_F(AnEcoreThatIsReset, WithoutAForkGoesOnAsBefore) {
  ecore_fork_reset();

  sendText(proxy.port(RPC_PORT_PORT_MAIN), "still there");

  EXPECT_TRUE(runUntil([&] { return stub.texts.size() == 1; }));
}

class AnExecutedProgram : public ConnectedEnds {};

TEST_F(AnExecutedProgram, InheritsNoDescriptor) {
  const std::size_t listed = countDescriptors();
  FILE *output = popen("ls -l /proc/self/fd | grep -c socket", "re");
  ASSERT_NE(output, nullptr);
  int sockets = -1;

  EXPECT_EQ(fscanf(output, "%d", &sockets), 1);

  pclose(output);
  EXPECT_EQ(sockets, 0);
  EXPECT_EQ(countDescriptors(), listed);
}

/// How many times Ecore is initialised at the moment.
int countInits() {
  const int count = ecore_init() - 1;
  ecore_shutdown();
  return count;
}

class AStubBeforeEcoreIsInitialised : public Runtime {};

TEST_F(AStubBeforeEcoreIsInitialised, InitialisesItAndShutsItDownAgain) {
  ecore_shutdown(); // What the fixture did.
  const int before = countInits();
  rpc_port_stub_h stub = nullptr;

  EXPECT_EQ(rpc_port_stub_create(&stub, kPort), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_stub_listen(stub), RPC_PORT_ERROR_NONE);
  EXPECT_GE(countInits(), 1);
  EXPECT_EQ(rpc_port_stub_destroy(stub), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(countInits(), before);
  ecore_init();
}

class AnApplicationThatShutsEcoreDownFirst : public Runtime {};

TEST_F(AnApplicationThatShutsEcoreDownFirst, CanStillDestroyItsStubAndProxy) {
  StubEnd stub;
  ProxyEnd proxy;
  stub.listen();
  proxy.connect();
  ASSERT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 1; }));

  ecore_shutdown();
  EXPECT_EQ(rpc_port_proxy_destroy(std::exchange(proxy.handle, nullptr)), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_stub_destroy(std::exchange(stub.handle, nullptr)), RPC_PORT_ERROR_NONE);

  EXPECT_GE(ecore_init(), 1);
}

TEST_F(Runtime, SurvivesAPeerThatIsGoneWhileItSends) {
  std::signal(SIGPIPE, SIG_DFL); // Ecore ignores it; an application may have other plans.
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  Program peer("proxy");
  ASSERT_TRUE(runUntil([&] { return !stub.texts.empty(); }));
  peer.kill();

  int result = RPC_PORT_ERROR_NONE;
  for (int i = 0; i < 10 && result == RPC_PORT_ERROR_NONE; ++i) {
    result = sendText(stub.port(RPC_PORT_PORT_CALLBACK), "to nobody");
  }

  EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR);
  EXPECT_TRUE(runUntil([&] { return stub.ended.size() == 1; }));
}

/// Ports that come about while standard input is closed.
class PortsWithoutStandardInput : public Runtime {
protected:
  PortsWithoutStandardInput() : _saved(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
    close(STDIN_FILENO);
  }
  ~PortsWithoutStandardInput() override {
    dup2(_saved, STDIN_FILENO);
    close(_saved);
  }

private:
  int _saved;
};

TEST_F(PortsWithoutStandardInput, DoNotTakeItsPlace) {
  StubEnd stub;
  ProxyEnd proxy;

  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return !proxy.mainPorts.empty() && !stub.instances.empty(); }));
  char byte = 'x';
  EXPECT_TRUE(read(STDIN_FILENO, &byte, 1) < 0 && errno == EBADF);
}

} // namespace
} // namespace rpc_test
