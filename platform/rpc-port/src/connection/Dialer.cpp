// SPDX-License-Identifier: Apache-2.0
#include "connection/Dialer.h"

#include "common/Deadline.h"
#include "common/Names.h"
#include "common/Printable.h"
#include "common/bounds.h"
#include "common/log.h"
#include "launcher/launch.h"
#include "registry/LocalPort.h"
#include "wire/Hello.h"

#include <algorithm>
#include <new>
#include <poll.h>
#include <utility>

namespace platform::rpc_port {

Dialer::Dialer(Done done, Peer peer)
    : _done(done), _peer(std::move(peer)), _sender(ownSenderName()), _error(RPC_PORT_ERROR_NONE),
      _retry(Callback<void()>::to<&Dialer::onRetry>(*this)),
      _timeout(Callback<void()>::to<&Dialer::onTimeout>(*this)),
      _outcome(Callback<void()>::to<&Dialer::onOutcome>(*this)) {}

void Dialer::start() {
  _timeout.start(kWelcomeSeconds);
  onRetry();
}

void Dialer::cancel() {
  _retry.stop();
  _timeout.stop();
  _outcome.cancel();
  for (Line &line : _lines) {
    line.channel.reset();
  }
  _state = State::Failed;
}

ConnectionEnds Dialer::takeEnds() {
  return {std::move(_lines[RPC_PORT_PORT_MAIN].channel),
          std::move(_lines[RPC_PORT_PORT_CALLBACK].channel)};
}

void Dialer::onRetry() {
  attempt();
  if (_state == State::Connecting) {
    _retry.start(kRetrySeconds);
  } else if (_state == State::Waiting) {
    watchForWelcome();
  }
  if (_state == State::Failed) {
    _outcome.plan();
  }
}

void Dialer::onTimeout() {
  _retry.stop();
  for (Line &line : _lines) {
    if (_state == State::Waiting) {
      receive(line); // The loop may have been held up, and the welcome may be there already.
    }
  }
  if (!isDone()) {
    dlog_print(DLOG_WARN, kLogTag, "%s/%s does not answer", Printable(_peer.application).text(),
               Printable(_peer.portName).text());
    fail(RPC_PORT_ERROR_IO_ERROR);
  }
  _outcome.plan();
}

void Dialer::onOutcome() {
  const auto self = shared_from_this();
  _done(*this);
}

void Dialer::attempt() try { openLines(); } catch (const std::bad_alloc &) {
  fail(RPC_PORT_ERROR_OUT_OF_MEMORY);
}

/// Opens those of the two sockets that are not open yet.
void Dialer::openLines() {
  for (const auto type : {RPC_PORT_PORT_MAIN, RPC_PORT_PORT_CALLBACK}) {
    if (_lines[type].channel) {
      continue;
    }
    ConnectedSocket socket = connectToPort(_peer.application, _peer.portName);
    if (socket.outcome == ConnectOutcome::Busy || mayListenSoon(socket)) {
      return;
    }
    if (socket.outcome == ConnectOutcome::Failed || !sayHello(type, std::move(socket.descriptor))) {
      fail(socket.error == RPC_PORT_ERROR_NONE ? RPC_PORT_ERROR_IO_ERROR : socket.error);
      return;
    }
  }
  _state = State::Waiting;
}

/// Starts the application if it does not run, once; an application that starts may yet listen.
bool Dialer::mayListenSoon(const ConnectedSocket &socket) {
  const bool isAbsent = socket.outcome == ConnectOutcome::Failed
                        && socket.error == RPC_PORT_ERROR_IO_ERROR
                        && _lines[RPC_PORT_PORT_MAIN].channel == nullptr;
  if (!isAbsent || _peer.application == ownAppId()) {
    return false;
  }
  if (!std::exchange(_hasLaunched, true)
      && application::launch(_peer.application, application::LaunchReason::Default)
             == application::Launch::Unknown) {
    return false;
  }
  return application::isStarting(_peer.application);
}

bool Dialer::sayHello(rpc_port_port_type_e type, Descriptor socket) {
  auto channel = std::make_unique<Channel>(std::move(socket), FrameKind::Welcome);
  const Buffer hello = encodeHello({type, _peer.instance, _sender});
  OutgoingMessage message(FrameKind::Hello);
  message.add(hello.data(), hello.size());
  if (channel->send(message) != SendOutcome::Taken) {
    return false;
  }
  _lines[type].channel = std::move(channel);
  return true;
}

void Dialer::watchForWelcome() {
  const auto listener = Channel::Listener::to<&Dialer::channelReady>(*this);
  const bool isWatched = std::all_of(_lines.begin(), _lines.end(), [listener](const Line &line) {
    return line.channel->attach(listener, true);
  });
  if (!isWatched) {
    fail(RPC_PORT_ERROR_IO_ERROR);
  }
}

void Dialer::channelReady(Channel &channel, FdWatch::Events /*events*/) {
  if (isDone()) {
    return; // The outcome is on its way.
  }
  const auto self = shared_from_this();
  receive(_lines[&channel == _lines[RPC_PORT_PORT_MAIN].channel.get() ? 0 : 1]);
  if (isDone()) {
    _timeout.stop();
    _done(*this);
  }
}

/// A welcome counts even if the stub has closed since: the new connection then ends like any other.
void Dialer::receive(Line &line) {
  const Channel::Input input = line.isWelcomed ? Channel::Input::Drained : line.channel->receive();
  const bool hasEnded = input == Channel::Input::Closed || input == Channel::Input::Invalid;
  Inbox &inbox = line.channel->inbox();
  if (!line.isWelcomed && !inbox.empty()) {
    line.isWelcomed = isWelcome(inbox.pop().payload);
    line.channel->setReading(false); // Its messages wait for the other line's welcome.
    if (!line.isWelcomed) {
      fail(RPC_PORT_ERROR_IO_ERROR);
      return;
    }
  }
  if (std::all_of(_lines.begin(), _lines.end(), [](const Line &one) { return one.isWelcomed; })) {
    _state = State::Welcomed;
  } else if (hasEnded && !line.isWelcomed) {
    dlog_print(DLOG_WARN, kLogTag, "%s/%s refuses the connection; its log says why",
               Printable(_peer.application).text(), Printable(_peer.portName).text());
    fail(RPC_PORT_ERROR_IO_ERROR);
  }
}

int Dialer::wait() {
  const Deadline deadline(kWelcomeSeconds);
  attempt();
  while (!isDone() && !deadline.isOver()) {
    // A stub of this process waits for the loop, which waits for us.
    const bool isOwn = LocalPort::serve(_peer.application, _peer.portName);
    if (_state == State::Connecting) {
      (void)poll(nullptr, 0, static_cast<int>(kRetrySeconds * 1000));
      attempt();
    } else {
      waitForWelcome(isOwn ? kRetrySeconds : deadline.secondsLeft());
    }
  }
  if (!isDone()) {
    fail(RPC_PORT_ERROR_IO_ERROR);
  }
  return _error;
}

/// Waits on one line after the other: both welcomes have to come, and a refusal closes both
/// sockets.
void Dialer::waitForWelcome(double seconds) {
  Line &line = _lines[RPC_PORT_PORT_MAIN].isWelcomed ? _lines[RPC_PORT_PORT_CALLBACK]
                                                     : _lines[RPC_PORT_PORT_MAIN];
  if (line.channel->waitForInput(seconds)) {
    receive(line);
  }
}

void Dialer::fail(int error) {
  _state = State::Failed;
  _error = error;
}

} // namespace platform::rpc_port
