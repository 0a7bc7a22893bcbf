// SPDX-License-Identifier: Apache-2.0
#include "connection/Lobby.h"

#include "common/log.h"

#include <algorithm>
#include <new>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace platform::rpc_port {

namespace {

constexpr int kSweepsUntilRefused = 2;

/// @return The process at the other end, or nothing when it is not of this user.
std::optional<pid_t> findPeer(int socket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.uid != geteuid()) {
    return std::nullopt;
  }
  return peer.pid; // 0 for a process of another PID namespace, which is as welcome.
}

} // namespace

Lobby::Lobby(Handlers handlers, double sweepSeconds)
    : _handlers(handlers), _sweepSeconds(sweepSeconds),
      _sweep(Callback<void()>::to<&Lobby::sweep>(*this)) {}

void Lobby::add(Descriptor socket) try {
  const std::optional<pid_t> process = findPeer(socket.get());
  if (!process) {
    dlog_print(DLOG_WARN, kLogTag, "a process of another user is refused");
    return;
  }
  if (_guests.size() == kMaxGuests) {
    refuse(_guests.begin(), "it has waited longest, and too many wait");
  }
  addGuest(std::move(socket), *process);
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "a connection is refused: there is no memory for it");
}

void Lobby::addGuest(Descriptor socket, pid_t process) {
  Guest guest{std::make_unique<Channel>(std::move(socket), FrameKind::Hello), process, {}};
  if (!guest.channel->attach(Channel::Listener::to<&Lobby::channelReady>(*this), true)) {
    return;
  }
  _guests.push_back(std::move(guest));
  if (!_sweep.isRunning()) {
    _sweep.start(_sweepSeconds);
  }
}

void Lobby::close() {
  _sweep.stop();
  _guests.clear();
}

void Lobby::receiveHellos() {
  const auto self = shared_from_this();
  std::vector<Channel *> channels;
  for (const Guest &guest : _guests) {
    channels.push_back(guest.channel.get());
  }
  for (Channel *channel : channels) {
    // A hello may have made a connection of the guest, or sent it away.
    const auto guest = find(*channel);
    if (guest != _guests.end() && !guest->hello) {
      channelReady(*channel, {true, false, false});
    }
  }
}

Lobby::Guests::iterator Lobby::find(const Channel &channel) {
  return std::find_if(_guests.begin(), _guests.end(),
                      [&channel](const Guest &guest) { return guest.channel.get() == &channel; });
}

void Lobby::channelReady(Channel &channel, FdWatch::Events events) {
  const auto self = shared_from_this();
  const auto guest = find(channel);
  if (guest->hello) {
    if (events.hungUp) {
      refuse(guest, "it has gone before its second socket came");
    }
    return;
  }
  const Channel::Input input = channel.receive();
  const bool hasEnded = input == Channel::Input::Closed || input == Channel::Input::Invalid;
  if (channel.inbox().empty()) {
    if (hasEnded && channel.isUntouched()) {
      remove(guest); // Somebody looked whether anybody listens.
    } else if (hasEnded) {
      refuse(guest, "it has said no hello");
    }
    return;
  }
  if (const char *fault = takeHello(*guest)) {
    refuse(guest, fault);
    return;
  }
  findTwin(guest);
}

/// The first frame has come, and the reader has checked that it is a hello.
/// @return nullptr when the guest may wait for its second socket, else why it is refused.
const char *Lobby::takeHello(Guest &guest) try {
  const Frame frame = guest.channel->inbox().pop();
  std::optional<Hello> hello = decodeHello(frame.payload);
  if (!hello) {
    return "its hello is not of this version";
  }
  if (const char *fault = findFault(guest, *hello)) {
    return fault;
  }
  guest.hello = std::move(hello);
  // Requests that are in already wait in the inbox, further ones in the socket.
  guest.channel->setReading(false);
  return nullptr;
} catch (const std::bad_alloc &) {
  return "there is no memory for it";
}

const char *Lobby::findFault(const Guest &guest, const Hello &hello) const {
  if (_handlers.isInstanceInUse(hello.instance)) {
    return "its instance is in use";
  }
  for (const Guest &other : _guests) {
    if (!other.hello || other.hello->instance != hello.instance) {
      continue;
    }
    if (other.process != guest.process || other.hello->sender != hello.sender) {
      return "its instance is another process's or sender's";
    }
    if (other.hello->portType == hello.portType) {
      return "its instance has a socket of this type already";
    }
  }
  return nullptr;
}

void Lobby::findTwin(Guests::iterator guest) {
  const auto twin = std::find_if(_guests.begin(), _guests.end(), [guest](const Guest &other) {
    return &other != &*guest && other.hello && other.hello->instance == guest->hello->instance;
  });
  if (twin == _guests.end()) {
    return;
  }
  const Hello hello = std::move(*guest->hello);
  ConnectionEnds ends;
  const auto place = [&ends](const Guest &one) -> std::unique_ptr<Channel> & {
    return one.hello->portType == RPC_PORT_PORT_MAIN ? ends.main : ends.callback;
  };
  place(*guest) = std::move(guest->channel);
  place(*twin) = std::move(twin->channel);
  remove(std::max(guest, twin));
  remove(std::min(guest, twin));
  _handlers.admit(hello, std::move(ends));
}

void Lobby::refuse(Guests::iterator guest, const char *reason) {
  dlog_print(DLOG_WARN, kLogTag, "a connection of process %d is refused: %s",
             static_cast<int>(guest->process), reason);
  remove(guest);
}

/// Stops the timer with the last guest: an idle application is not woken up.
void Lobby::remove(Guests::iterator guest) {
  _guests.erase(guest);
  if (_guests.empty()) {
    _sweep.stop();
  }
}

/// A guest is refused by its second sweep, not its first: a loop that was held up serves its timers
/// before its sockets, but between two sweeps it has looked at the sockets.
void Lobby::sweep() {
  for (Guest &guest : _guests) {
    ++guest.sweeps;
  }
  const auto isLate = [](const Guest &guest) { return guest.sweeps >= kSweepsUntilRefused; };
  for (auto guest = std::find_if(_guests.begin(), _guests.end(), isLate); guest != _guests.end();
       guest = std::find_if(_guests.begin(), _guests.end(), isLate)) {
    refuse(guest, guest->hello ? "its second socket did not come in time"
                               : "its hello did not come in time");
  }
  if (!_guests.empty()) {
    _sweep.start(_sweepSeconds);
  }
}

} // namespace platform::rpc_port
