// SPDX-License-Identifier: Apache-2.0
// The lobby's sense of time, with sweeps that follow each other quickly.
#include <connection/Lobby.h>

#include "support/RawSocket.h"
#include "support/Runtime.h"

#include <array>
#include <gmock/gmock.h>
#include <sys/socket.h>

namespace platform::rpc_port {
namespace {

using rpc_test::frame;
using rpc_test::hello;
using rpc_test::kHello;
using rpc_test::RawSocket;
using rpc_test::runUntil;
using testing::ElementsAre;

constexpr double kQuickSweep = 0.02;

class ALobby : public rpc_test::Runtime {
protected:
  /// A socket whose other end has just been accepted.
  std::unique_ptr<RawSocket> visitor() {
    std::array<int, 2> sockets{};
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets.data());
    lobby->add(Descriptor(sockets[1]));
    return std::make_unique<RawSocket>(sockets[0]);
  }

  bool isInstanceInUse(const std::string & /*instance*/) const { return false; }
  void admit(const Hello &one, ConnectionEnds /*ends*/) { admitted.push_back(one.instance); }

  std::shared_ptr<Lobby> lobby = std::make_shared<Lobby>(
      Lobby::Handlers{Callback<bool(const std::string &)>::to<&ALobby::isInstanceInUse>(*this),
                      Callback<void(const Hello &, ConnectionEnds)>::to<&ALobby::admit>(*this)},
      kQuickSweep);
  std::vector<std::string> admitted;
};

TEST_F(ALobby, SendsAGuestAwayWhoDoesNotSayHello) {
  const auto guest = visitor();

  EXPECT_TRUE(runUntil([&] { return guest->hasEnded(); }));
  EXPECT_EQ(lobby->size(), 0U);
}

TEST_F(ALobby, SendsAGuestAwayWhoseHelloStaysIncomplete) {
  const auto guest = visitor();
  guest->send(frame(kHello, hello(0, "i", "a")).substr(0, 15));

  EXPECT_TRUE(runUntil([&] { return guest->hasEnded(); }));
}

TEST_F(ALobby, SendsAGuestAwayWhoseTwinDoesNotCome) {
  const auto guest = visitor();
  guest->send(frame(kHello, hello(0, "i", "a")));

  EXPECT_TRUE(runUntil([&] { return guest->hasEnded(); }));
  EXPECT_TRUE(admitted.empty());
}

TEST_F(ALobby, AdmitsGuestsWhoseHelloCameWhileTheLoopWasHeldUp) {
  const auto main = visitor();
  const auto callback = visitor();
  main->send(frame(kHello, hello(0, "i", "a")));
  callback->send(frame(kHello, hello(1, "i", "a")));
  const double held = ecore_time_get() + 3 * kQuickSweep;
  while (ecore_time_get() < held) {
  }

  EXPECT_TRUE(runUntil([&] { return !admitted.empty() || main->hasEnded(); }));
  EXPECT_THAT(admitted, ElementsAre("i"));
}

} // namespace
} // namespace platform::rpc_port
