// SPDX-License-Identifier: Apache-2.0
//
// A stub that listens, and hostile peers at its socket. The input is a script: steps of one byte,
// each followed by what it needs. Whatever the peers do, every connection that the application
// heard of ends for it, too, and a peer that keeps the rules is served afterwards.
#include "support/HostileSocket.h"
#include "support/Input.h"
#include "support/bundles.h"
#include "support/check.h"
#include "support/environment.h"
#include "support/loop.h"

#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <array>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using fuzz::check;
using fuzz::HostileSocket;
using fuzz::Input;
using platform::rpc_port::FrameKind;

constexpr const char *kPortName = "fuzzed";
// More turns than a connection takes to come about or to end.
constexpr int kManyTurns = 8;
constexpr std::size_t kMaxSteps = 64;

std::string socketPath() {
  return fuzz::folder() + "/rpc-port/" + fuzz::kAppId + "/" + kPortName;
}

class Thrown : public std::runtime_error {
public:
  Thrown() : std::runtime_error("thrown by a handler") {}
};

// The application: what its handlers do is up to the script.
class Application {
public:
  enum class Reaction {
    ReadParcel,
    ReadBytes,
    Answer,
    Ignore,
    Refuse,
    Disconnect,
    Destroy,
    Throw,
    TurnLoop,
    ConnectAtOnce,
  };
  static constexpr std::size_t kReactions = 10;

  Application() {
    check(rpc_port_stub_create(&_stub, kPortName) == 0, "a stub can be made");
    rpc_port_stub_add_connected_event_cb(_stub, onConnected, this);
    rpc_port_stub_add_disconnected_event_cb(_stub, onDisconnected, this);
    rpc_port_stub_add_received_event_cb(_stub, onReceived, this);
    check(rpc_port_stub_listen(_stub) == 0, "a stub can listen");
  }
  Application(const Application &) = delete;
  Application &operator=(const Application &) = delete;
  ~Application() { destroy(); }

  void destroy() {
    if (_stub != nullptr) {
      rpc_port_stub_destroy(_stub);
      _stub = nullptr;
    }
  }

  void reactWith(Reaction reaction) { _reaction = reaction; }
  bool isListening() const { return _stub != nullptr; }
  std::size_t connections() const { return _instances.size(); }

  // On a port that it once had, alive or not.
  void useOldPort(Input &input) {
    if (_ports.empty()) {
      return;
    }
    const rpc_port_h port = _ports[input.below(_ports.size())];
    switch (input.below(3)) {
    case 0:
      (void)rpc_port_disconnect(port);
      return;
    case 1:
      (void)rpc_port_write(port, "bytes", 5);
      return;
    default:
      (void)readParcel(port);
    }
  }

private:
  static void onConnected(const char *sender, const char *instance, void *data) {
    auto *const self = static_cast<Application *>(data);
    check(*sender != '\0' && self->_instances.insert(instance).second,
          "an instance is connected once at a time");
    rpc_port_h port = nullptr;
    const auto type = RPC_PORT_PORT_CALLBACK;
    check(rpc_port_stub_get_port(self->_stub, type, instance, &port) == 0,
          "a connection has its callback port");
    self->_ports.push_back(port);
  }

  static void onDisconnected(const char * /*sender*/, const char *instance, void *data) {
    check(static_cast<Application *>(data)->_instances.erase(instance) == 1,
          "what is disconnected was connected");
  }

  static int onReceived(const char * /*sender*/, const char *instance, rpc_port_h port,
                        void *data) {
    auto *const self = static_cast<Application *>(data);
    check(self->_instances.count(instance) == 1, "only who is connected sends");
    self->_ports.push_back(port);
    return self->react(port);
  }

  int react(rpc_port_h port) {
    std::array<unsigned char, 7> bytes{};
    switch (_reaction) {
    case Reaction::ReadParcel:
      return readParcel(port);
    case Reaction::ReadBytes:
      return rpc_port_read(port, bytes.data(), bytes.size()) == 0 ? 0 : readParcel(port);
    case Reaction::Answer:
      (void)rpc_port_write(port, "answer", 6);
      (void)rpc_port_write(_ports.front(), "callback", 8);
      return readParcel(port);
    case Reaction::Ignore:
      return 0;
    case Reaction::Refuse:
      return -1;
    case Reaction::Disconnect:
      return rpc_port_disconnect(port);
    case Reaction::Destroy:
      destroy();
      return 0;
    case Reaction::Throw:
      (void)readParcel(port);
      throw Thrown();
    case Reaction::TurnLoop:
      fuzz::turnLoop(2);
      return readParcel(port);
    case Reaction::ConnectAtOnce:
      connectAtOnce();
      return readParcel(port);
    }
    return 0;
  }

  // To the stub itself, among the other waiting peers.
  static void connectAtOnce() {
    rpc_port_proxy_h proxy = nullptr;
    check(rpc_port_proxy_create(&proxy) == 0, "a proxy can be made");
    check(rpc_port_proxy_connect_sync(proxy, fuzz::kAppId, kPortName) == 0,
          "a proxy connects to a stub of its process");
    rpc_port_proxy_destroy(proxy);
  }

  static int readParcel(rpc_port_h port) {
    rpc_port_parcel_h parcel = nullptr;
    const int result = rpc_port_parcel_create_from_port(&parcel, port);
    check((result == 0) == (parcel != nullptr), "there is a parcel, or an error");
    if (result == 0) {
      int number = 0;
      bundle *read = nullptr;
      (void)rpc_port_parcel_read_int32(parcel, &number);
      (void)rpc_port_parcel_read_bundle(parcel, &read);
      bundle_free(read);
      rpc_port_parcel_destroy(parcel);
    }
    return result;
  }

  rpc_port_stub_h _stub = nullptr;
  Reaction _reaction = Reaction::ReadParcel;
  std::set<std::string> _instances;
  std::vector<rpc_port_h> _ports; // All that it ever had.
};

// An exception of a handler passes through the loop to the caller that runs it.
void turn(int times) {
  try {
    fuzz::turnLoop(times);
  } catch (const Thrown &) {
  }
}

platform::rpc_port::Hello readHello(Input &input) {
  const std::size_t choice = input.byte();
  return {choice % 2 == 0 ? RPC_PORT_PORT_MAIN : RPC_PORT_PORT_CALLBACK,
          "instance-" + std::to_string(choice / 2 % 4),
          choice < 128 ? "com.valtren.tizen.norix" : "org.example.other"};
}

void sendSomething(HostileSocket &peer, Input &input) {
  switch (input.below(4)) {
  case 0:
    peer.sendHello(readHello(input));
    return;
  case 1:
    peer.sendParcel(input.text());
    return;
  case 2:
    peer.sendFrame(static_cast<FrameKind>(input.below(6)), input.text());
    return;
  default:
    peer.send(input.longText());
  }
}

void takeStep(Application &application, std::array<HostileSocket, 4> &peers, Input &input) {
  const std::size_t step = input.byte();
  HostileSocket &peer = peers[step / 8 % peers.size()];
  switch (step % 8) {
  case 0:
    peer.connectTo(socketPath());
    return;
  case 1:
  case 2:
    sendSomething(peer, input);
    return;
  case 3:
    turn(1 + static_cast<int>(input.below(4)));
    return;
  case 4:
    peer.close();
    return;
  case 5:
    peer.endSending();
    return;
  case 6:
    application.reactWith(static_cast<Application::Reaction>(input.below(Application::kReactions)));
    return;
  default:
    (void)peer.receive();
    application.useOldPort(input);
  }
}

// The hostile ones have gone: so many turns that the application has heard of it.
void settle(const Application &application) {
  int patience = kManyTurns;
  do {
    turn(kManyTurns);
  } while (application.connections() > 0 && --patience > 0);
}

// Both sockets say hello, and both are welcomed.
void checkService(Application &application) {
  std::array<HostileSocket, 2> friendly;
  for (const auto type : {RPC_PORT_PORT_MAIN, RPC_PORT_PORT_CALLBACK}) {
    friendly[type].connectTo(socketPath());
    check(friendly[type].isOpen(), "a peer that keeps the rules can connect");
    friendly[type].sendHello({type, "friendly", "org.example.friendly"});
  }
  turn(kManyTurns);
  check(application.connections() == 1, "a peer that keeps the rules is heard of");
  for (HostileSocket &socket : friendly) {
    check(!socket.receive().empty(), "a peer that keeps the rules is welcomed");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::startLoop();
  Input input(data, size);
  Application application;
  {
    std::array<HostileSocket, 4> peers;
    for (std::size_t i = 0; i < kMaxSteps && !input.empty(); ++i) {
      takeStep(application, peers, input);
    }
  }

  application.reactWith(Application::Reaction::ReadParcel);
  settle(application);
  if (application.isListening()) {
    check(application.connections() == 0, "a connection ends for both sides");
    checkService(application);
  }
  return 0;
}
