// SPDX-License-Identifier: Apache-2.0
#include "connection/Dialer.h"

#include "common/Deadline.h"
#include "common/bounds.h"
#include "common/log.h"
#include "connection/Acceptor.h"
#include "socket/Names.h"
#include "wire/Hello.h"

#include <algorithm>
#include <poll.h>
#include <utility>

namespace platform::rpc_port {

Dialer::Dialer(Owner &owner, Peer peer)
    : _owner(owner), _peer(std::move(peer)), _sender(ownSenderName()), _error(RPC_PORT_ERROR_NONE),
      _retry(&Dialer::onRetry, this), _timeout(&Dialer::onTimeout, this),
      _outcome(&Dialer::onOutcome, this) {}

void Dialer::start() {
  _timeout.start(kWelcomeSeconds);
  onRetry(this);
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

void Dialer::onRetry(void *data) {
  auto *dialer = static_cast<Dialer *>(data);
  dialer->attempt();
  if (dialer->_state == State::Connecting) {
    dialer->_retry.start(kRetrySeconds);
  } else if (dialer->_state == State::Waiting) {
    dialer->watchForWelcome();
  }
  if (dialer->_state == State::Failed) {
    dialer->_outcome.plan();
  }
}

void Dialer::onTimeout(void *data) {
  auto *dialer = static_cast<Dialer *>(data);
  dialer->_retry.stop();
  for (Line &line : dialer->_lines) {
    if (dialer->_state == State::Waiting) {
      dialer->receive(line); // The loop may have been held up, with the welcome there already.
    }
  }
  if (!dialer->isDone()) {
    dlog_print(DLOG_WARN, kLogTag, "%s/%s does not answer", dialer->_peer.application.c_str(),
               dialer->_peer.portName.c_str());
    dialer->fail(RPC_PORT_ERROR_IO_ERROR);
  }
  dialer->_outcome.plan();
}

void Dialer::onOutcome(void *data) {
  const auto self = static_cast<Dialer *>(data)->shared_from_this();
  self->_owner.dialed(*self);
}

/// Opens what is not open yet of the two sockets.
void Dialer::attempt() {
  for (const auto type : {RPC_PORT_PORT_MAIN, RPC_PORT_PORT_CALLBACK}) {
    if (_lines[type].channel) {
      continue;
    }
    ConnectedSocket socket = connectToPort(_peer.application, _peer.portName);
    if (socket.outcome == ConnectOutcome::Busy) {
      return;
    }
    if (socket.outcome == ConnectOutcome::Failed || !sayHello(type, std::move(socket.descriptor))) {
      fail(socket.error == RPC_PORT_ERROR_NONE ? RPC_PORT_ERROR_IO_ERROR : socket.error);
      return;
    }
  }
  _state = State::Waiting;
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
  const bool isWatched = std::all_of(_lines.begin(), _lines.end(), [this](const Line &line) {
    return line.channel->attach(*this, true);
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
    _owner.dialed(*this);
  }
}

/// A welcome counts also when the stub has gone since: the connection then ends in its own way.
void Dialer::receive(Line &line) {
  const bool hasEnded = !line.isWelcomed && line.channel->receive() == Channel::Input::Ended;
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
               _peer.application.c_str(), _peer.portName.c_str());
    fail(RPC_PORT_ERROR_IO_ERROR);
  }
}

int Dialer::wait() {
  const Deadline deadline(kWelcomeSeconds);
  attempt();
  while (!isDone() && !deadline.isOver()) {
    // A stub of this process waits for the loop, which waits for us.
    const bool isOwn = Acceptor::serve(_peer.application, _peer.portName);
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

/// On one line after the other: both welcomes have to come anyway, and a refusal closes both.
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
