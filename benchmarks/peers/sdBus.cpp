// SPDX-License-Identifier: Apache-2.0
//
// A D-Bus method call with sd-bus on both sides: through a message bus, which the benchmark starts
// for itself, and from process to process.
#include "harness/SocketPair.h"
#include "peers/Peer.h"
#include "support/Process.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace benchmarks {

namespace {

constexpr const char *kBusName = "sd-bus through dbus-daemon";
constexpr const char *kPeerToPeerName = "sd-bus peer to peer";
constexpr const char *kPackages = "libsystemd-dev and dbus-daemon";
constexpr const char *kService = "org.example.Benchmark";
constexpr const char *kPath = "/org/example/Benchmark";
constexpr const char *kMethod = "Ask";
// What precedes and follows the parameters in the message is not counted for the others either.
constexpr std::size_t kParametersSize = kRequestSize - sizeof(std::uint32_t);

struct CloseBus {
  void operator()(sd_bus *bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

void require(int result, const char *what) {
  if (result < 0) {
    throw std::runtime_error(std::string("sd-bus: ") + what + ": error " + std::to_string(result));
  }
}

Bus newBus() {
  sd_bus *bus = nullptr;
  require(sd_bus_new(&bus), "a connection");
  return Bus(bus);
}

Bus joinBus(const std::string &address) {
  Bus bus = newBus();
  require(sd_bus_set_address(bus.get(), address.c_str()), "the address");
  require(sd_bus_set_bus_client(bus.get(), 1), "being a client");
  require(sd_bus_start(bus.get()), "joining the bus");
  return bus;
}

/** @param isServer Who says hello second. */
Bus joinPeer(int socket, bool isServer) {
  Bus bus = newBus();
  require(sd_bus_set_fd(bus.get(), socket, socket), "the socket");
  if (isServer) {
    const sd_id128_t serverId = {
        {'n', 'o', 'r', 'i', 'x', '-', 'b', 'e', 'n', 'c', 'h', 'm', 'a', 'r', 'k', 's'}};
    require(sd_bus_set_server(bus.get(), 1, serverId), "being the server");
  }
  require(sd_bus_start(bus.get()), "the connection");
  return bus;
}

void ask(sd_bus *bus, const char *destination, const std::string &parameters,
         std::size_t answerSize) {
  sd_bus_error error{};
  sd_bus_message *reply = nullptr;
  require(sd_bus_call_method(bus, destination, kPath, kService, kMethod, &error, &reply, "su",
                             parameters.c_str(), static_cast<std::uint32_t>(answerSize)),
          "the call");
  const std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)> owned(
      reply, sd_bus_message_unref);
  const char *text = nullptr;
  require(sd_bus_message_read(reply, "s", &text), "the answer");
  checkAnswer(answerSize, std::char_traits<char>::length(text));
}

void askRepeatedly(sd_bus *bus, const char *destination, std::size_t answerSize, int count,
                   Samples &samples) {
  const std::string parameters(kParametersSize, 'p');
  auto start = Samples::Clock::now();
  for (int i = 0; i < count; ++i) {
    ask(bus, destination, parameters, answerSize);
    start = samples.addSince(start);
  }
}

std::string writeConfiguration(const std::filesystem::path &folder) {
  const std::filesystem::path path = folder / "bus.conf";
  std::ofstream(path) << R"(<busconfig><type>session</type><listen>unix:path=)"
                      << (folder / "bus").string()
                      << R"(</listen><auth>EXTERNAL</auth><policy context="default">)"
                      << R"(<allow send_destination="*"/><allow receive_sender="*"/>)"
                      << R"(<allow own="*"/></policy></busconfig>)";
  return path;
}

class MessageBus final : public Peer {
public:
  explicit MessageBus(const std::filesystem::path &folder)
      : _daemon({BENCHMARK_DBUS_DAEMON, "--config-file=" + writeConfiguration(folder), "--nofork",
                 "--print-address"}),
        _address(_daemon.readLine()), _process(serveCommand(kBusName, {_address})) {
    _process.readLine();
    _bus = joinBus(_address);
  }

  void exchange(std::size_t answerSize, int count, Samples &samples) override {
    askRepeatedly(_bus.get(), kService, answerSize, count, samples);
  }

private:
  support::Process _daemon;
  std::string _address;
  support::Process _process;
  Bus _bus;
};

class PeerToPeer final : public Peer {
public:
  PeerToPeer() : _process(serveCommand(kPeerToPeerName, {_sockets.others()})) {
    _sockets.handOver();
    _bus = joinPeer(_sockets.release(), false);
  }

  void exchange(std::size_t answerSize, int count, Samples &samples) override {
    askRepeatedly(_bus.get(), nullptr, answerSize, count, samples);
  }

private:
  SocketPair _sockets;
  support::Process _process;
  Bus _bus;
};

int answer(sd_bus_message *call, void *texts, sd_bus_error * /*error*/) {
  if (sd_bus_message_is_method_call(call, kService, kMethod) == 0) {
    return 0;
  }
  const char *parameters = nullptr;
  std::uint32_t size = 0;
  require(sd_bus_message_read(call, "su", &parameters, &size), "the question");
  auto &text = *static_cast<std::string *>(texts);
  text.resize(size, 'a');
  return sd_bus_reply_method_return(call, "s", text.c_str());
}

int serve(const Bus &bus) {
  std::string text;
  require(sd_bus_add_object(bus.get(), nullptr, kPath, answer, &text), "the object");
  std::puts("ready");
  std::fflush(stdout);
  for (int result = 0; result >= 0;) {
    result = sd_bus_process(bus.get(), nullptr);
    if (result == 0) {
      result = sd_bus_wait(bus.get(), UINT64_MAX);
    }
  }
  return 0;
}

int serveBus(const std::vector<std::string> &arguments) {
  const Bus bus = joinBus(arguments.at(0));
  require(sd_bus_request_name(bus.get(), kService, 0), "the name");
  return serve(bus);
}

int servePeer(const std::vector<std::string> &arguments) {
  return serve(joinPeer(std::stoi(arguments.at(0)), true));
}

} // namespace

PeerKind messageBus() {
  return {kBusName, [](const auto &folder) { return std::make_unique<MessageBus>(folder); },
          serveBus, kPackages};
}

PeerKind busPeerToPeer() {
  return {kPeerToPeerName, [](const auto & /*folder*/) { return std::make_unique<PeerToPeer>(); },
          servePeer, kPackages};
}

} // namespace benchmarks
