// SPDX-License-Identifier: Apache-2.0
//
// A proxy that connects to a hostile stub. The input is a script: steps of one byte, each followed
// by what it needs. Whatever the stub does, the proxy's application hears of a connection's end, or
// that there was none.
#include "support/HostileSocket.h"
#include "support/Input.h"
#include "support/check.h"
#include "support/environment.h"
#include "support/loop.h"

#include "socket/PortSocket.h"

#include <bundle.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <array>
#include <memory>

namespace {

using fuzz::check;
using fuzz::HostileSocket;
using fuzz::Input;
using platform::rpc_port::FrameKind;
using platform::rpc_port::ListeningSocket;

constexpr const char *kHostileAppId = "org.example.hostile";
constexpr const char *kPortName = "fuzzed";
// More turns than a connection takes to come about or to end.
constexpr int kManyTurns = 8;
constexpr std::size_t kMaxSteps = 64;

int listeningSocket() {
  static const auto *const socket = [] {
    return ListeningSocket::open(kHostileAppId, kPortName).release();
  }();
  check(socket != nullptr, "a hostile stub can listen");
  return socket->descriptor();
}

// The application on the proxy's side.
class Application {
public:
  enum class Reaction { ReadParcel, ReadBytes, Ignore, Disconnect, Destroy, ConnectAgain };
  static constexpr std::size_t kReactions = 6;

  Application() {
    check(rpc_port_proxy_create(&_proxy) == 0, "a proxy can be made");
    rpc_port_proxy_add_connected_event_cb(_proxy, onConnected, this);
    rpc_port_proxy_add_disconnected_event_cb(_proxy, onDisconnected, this);
    rpc_port_proxy_add_rejected_event_cb(_proxy, onRejected, this);
    rpc_port_proxy_add_received_event_cb(_proxy, onReceived, this);
  }
  Application(const Application &) = delete;
  Application &operator=(const Application &) = delete;
  ~Application() { destroy(); }

  void destroy() {
    if (_proxy != nullptr) {
      rpc_port_proxy_destroy(_proxy);
      _proxy = nullptr;
    }
  }

  // Twice at the outside, for the stub has as many pairs of sockets.
  void connect() {
    if (_proxy != nullptr && _attempts < 2) {
      ++_attempts;
      check(rpc_port_proxy_connect(_proxy, kHostileAppId, kPortName) == 0, "connecting begins");
    }
  }

  void reactWith(Reaction reaction) { _reaction = reaction; }
  bool isAlive() const { return _proxy != nullptr; }
  int attempts() const { return _attempts; }
  int outcomes() const { return _connected + _rejected; }
  int connections() const { return _connected - _disconnected; }

  rpc_port_h port(rpc_port_port_type_e type) const {
    rpc_port_h port = nullptr;
    if (_proxy != nullptr) {
      (void)rpc_port_proxy_get_port(_proxy, type, &port);
    }
    return port;
  }

  // Waits for the answer on the main port: only for a stub that has ended its side.
  void readAnswers() const {
    const rpc_port_h main = port(RPC_PORT_PORT_MAIN);
    if (main == nullptr) {
      return;
    }
    (void)rpc_port_write(main, "question", 8);
    std::array<unsigned char, 5> bytes{};
    while (readParcel(main) || rpc_port_read(main, bytes.data(), bytes.size()) == 0) {
    }
  }

private:
  static Application &self(void *data) { return *static_cast<Application *>(data); }

  static void onConnected(const char * /*receiver*/, const char * /*portName*/, rpc_port_h port,
                          void *data) {
    check(port == self(data).port(RPC_PORT_PORT_MAIN), "a connection comes with its main port");
    ++self(data)._connected;
  }
  static void onDisconnected(const char * /*receiver*/, const char * /*portName*/, void *data) {
    ++self(data)._disconnected;
    check(self(data).connections() >= 0, "what is disconnected was connected");
  }
  static void onRejected(const char * /*receiver*/, const char * /*portName*/, void *data) {
    ++self(data)._rejected;
  }
  static void onReceived(const char * /*receiver*/, const char * /*portName*/, void *data) {
    check(self(data).connections() > 0, "only who is connected sends");
    self(data).react();
  }

  void react() {
    const rpc_port_h callback = port(RPC_PORT_PORT_CALLBACK);
    std::array<unsigned char, 7> bytes{};
    switch (_reaction) {
    case Reaction::ReadParcel:
      (void)readParcel(callback);
      return;
    case Reaction::ReadBytes:
      (void)rpc_port_read(callback, bytes.data(), bytes.size());
      return;
    case Reaction::Ignore:
      return;
    case Reaction::Disconnect:
      (void)rpc_port_disconnect(callback);
      return;
    case Reaction::Destroy:
      destroy();
      return;
    case Reaction::ConnectAgain:
      connect();
      (void)readParcel(callback);
    }
  }

  static bool readParcel(rpc_port_h port) {
    rpc_port_parcel_h parcel = nullptr;
    if (rpc_port_parcel_create_from_port(&parcel, port) != 0) {
      return false;
    }
    int number = 0;
    bundle *read = nullptr;
    (void)rpc_port_parcel_read_int32(parcel, &number);
    (void)rpc_port_parcel_read_bundle(parcel, &read);
    bundle_free(read);
    rpc_port_parcel_destroy(parcel);
    return true;
  }

  rpc_port_proxy_h _proxy = nullptr;
  Reaction _reaction = Reaction::ReadParcel;
  int _attempts = 0;
  int _connected = 0;
  int _disconnected = 0;
  int _rejected = 0;
};

// Two sockets for each of two connections, in the order in which the proxy opens them: the main
// port's and the callback port's.
class HostileStub {
public:
  void acceptAll() {
    while (_accepted < _sockets.size() && _sockets[_accepted].acceptFrom(listeningSocket())) {
      ++_accepted;
    }
  }

  HostileSocket &socket(std::size_t number) { return _sockets[number % _sockets.size()]; }

  void endSending() {
    for (HostileSocket &socket : _sockets) {
      socket.endSending();
    }
  }

  // Also of those that wait to be accepted.
  void closeAll() {
    for (HostileSocket &socket : _sockets) {
      socket.close();
    }
    HostileSocket waiting;
    while (waiting.acceptFrom(listeningSocket())) {
    }
  }

private:
  std::array<HostileSocket, 4> _sockets;
  std::size_t _accepted = 0;
};

void sendSomething(HostileSocket &socket, Input &input) {
  switch (input.below(4)) {
  case 0:
    socket.sendWelcome();
    return;
  case 1:
    socket.sendParcel(input.text());
    return;
  case 2:
    socket.sendFrame(static_cast<FrameKind>(input.below(6)), input.text());
    return;
  default:
    socket.send(input.longText());
  }
}

void takeStep(Application &application, HostileStub &stub, Input &input) {
  const std::size_t step = input.byte();
  HostileSocket &socket = stub.socket(step / 8);
  switch (step % 8) {
  case 0:
    application.connect();
    stub.acceptAll();
    return;
  case 1:
  case 2:
    sendSomething(socket, input);
    return;
  case 3:
    fuzz::turnLoop(1 + static_cast<int>(input.below(4)));
    stub.acceptAll();
    return;
  case 4:
    socket.close();
    return;
  case 5:
    stub.endSending();
    application.readAnswers();
    return;
  case 6:
    application.reactWith(static_cast<Application::Reaction>(input.below(Application::kReactions)));
    return;
  default:
    (void)socket.receive();
  }
}

// So many turns that the application has heard of every end.
void settle(const Application &application, HostileStub &stub) {
  int patience = kManyTurns;
  do {
    fuzz::turnLoop(kManyTurns);
    stub.closeAll(); // Also what a reaction has opened meanwhile.
  } while ((application.connections() > 0 || application.outcomes() < application.attempts())
           && --patience > 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::startLoop();
  Input input(data, size);
  Application application;
  application.connect();
  HostileStub stub;
  stub.acceptAll();
  for (std::size_t i = 0; i < kMaxSteps && !input.empty(); ++i) {
    takeStep(application, stub, input);
  }

  application.reactWith(Application::Reaction::ReadParcel);
  stub.closeAll();
  application.readAnswers();
  settle(application, stub);
  if (application.isAlive()) {
    check(application.outcomes() == application.attempts(), "every attempt to connect has one end");
    check(application.connections() == 0, "a connection ends for both sides");
  }
  return 0;
}
