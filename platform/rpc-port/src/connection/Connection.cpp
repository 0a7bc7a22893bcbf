// SPDX-License-Identifier: Apache-2.0
#include "connection/Connection.h"

#include "common/Deadline.h"
#include "common/ScopeExit.h"
#include "common/bounds.h"
#include "common/log.h"
#include "registry/Ports.h"

#include <algorithm>
#include <utility>

namespace platform::rpc_port {

Connection::Connection(std::weak_ptr<ConnectionOwner> owner, Peer peer, ConnectionEnds ends,
                       bool watchesMain)
    : _owner(std::move(owner)), _peer(std::move(peer)), _lines{{{std::move(ends.main), watchesMain},
                                                                {std::move(ends.callback), true}}},
      _turn(&Connection::onTurn, this) {}

bool Connection::open() {
  for (const auto type : {RPC_PORT_PORT_MAIN, RPC_PORT_PORT_CALLBACK}) {
    _lines[type].port = ports().add({shared_from_this(), type});
  }
  return std::all_of(_lines.begin(), _lines.end(), [this](Line &line) {
    return line.channel->attach(*this, line.isWatched && line.channel->inbox().empty());
  });
}

void Connection::announceWaiting() {
  if (const auto owner = _owner.lock()) {
    planNext(*owner);
  }
}

void Connection::close() {
  const auto self = shared_from_this(); // The ports may be all that holds it.
  const bool wasOpen = std::exchange(_state, State::Closed) == State::Open;
  _turn.cancel();
  for (Line &line : _lines) {
    ports().remove(line.port);
    if (wasOpen) {
      (void)line.channel->flush(); // The last chance of what the socket did not take so far.
    }
    line.channel->close();
  }
}

void Connection::channelReady(Channel &channel, FdWatch::Events events) {
  const auto self = shared_from_this();
  Line &line = _lines[&channel == _lines[RPC_PORT_PORT_MAIN].channel.get() ? 0 : 1];
  const bool takesNothing = events.writable && !channel.flush();
  if (takesNothing || events.hungUp) {
    peerHasGone();
  }
  if (events.readable) {
    receive(line);
  }
  takeTurn();
}

void Connection::onTurn(void *data) {
  const auto self = static_cast<Connection *>(data)->shared_from_this();
  self->takeTurn();
}

/// What one turn of the loop has for this connection; ends in a state that needs no other event.
void Connection::takeTurn() {
  const auto owner = _owner.lock();
  if (_state == State::Closed || !owner) {
    return;
  }
  const ScopeExit next([this, &owner] { planNext(*owner); });
  int budget = kMessagesPerTurn;
  for (Line &line : _lines) {
    if (_state == State::Draining) {
      receive(line);
    }
    handOut(*owner, line, budget);
  }
  if (isOver(*owner)) {
    close();
    owner->connectionEnded(*this);
  }
}

/// Not while messages wait: a peer that sends faster than it is answered is to feel it.
void Connection::receive(Line &line) {
  if (!line.isWatched || !line.channel->inbox().empty()) {
    return;
  }
  line.input = line.channel->receive();
  if (line.input == Channel::Input::Ended) {
    peerHasGone();
  }
}

void Connection::handOut(ConnectionOwner &owner, Line &line, int &budget) {
  while (line.isWatched && isReceiving(owner) && !line.channel->inbox().empty() && budget > 0
         && offer(owner, line)) {
    --budget;
  }
}

/// @return false when the message is left where it is, for a later turn.
bool Connection::offer(ConnectionOwner &owner, Line &line) {
  Inbox &inbox = line.channel->inbox();
  if (line.isOffering()) {
    return false;
  }
  const std::uint64_t number = inbox.frontNumber();
  const ScopeExit restore([&line, before = line.offered] { line.offered = before; });
  line.offered = number;

  const int result = owner.messageReady(*this, line.port);

  if (result != 0) {
    end();
    return false;
  }
  const bool isTaken = inbox.frontNumber() != number;
  if (!isTaken && _state == State::Draining) {
    // Offered for ever, it would keep a connection that has no other side any more.
    (void)inbox.pop();
    return true;
  }
  return isTaken;
}

bool Connection::isReceiving(const ConnectionOwner &owner) const {
  return (_state == State::Open || _state == State::Draining) && owner.hasReceivers();
}

bool Connection::isOver(const ConnectionOwner &owner) const {
  if (_state != State::Draining) {
    return _state == State::Ending;
  }
  return !owner.hasReceivers() || std::all_of(_lines.begin(), _lines.end(), [](const Line &line) {
    return !line.isWatched || (line.channel->inbox().empty() && line.input != Channel::Input::More);
  });
}

/// Sees to it that the loop comes back if, and only if, there is something to do.
void Connection::planNext(const ConnectionOwner &owner) {
  if (_state == State::Closed) {
    return;
  }
  const auto isOffering = [](const Line &line) { return line.isOffering(); };
  const auto isWaiting = [](const Line &line) {
    return line.isWatched && !line.channel->inbox().empty();
  };
  for (Line &line : _lines) {
    line.channel->setReading(line.isWatched && line.channel->inbox().empty());
  }
  // A handler up the stack runs a loop of its own; its turn plans the next when it is done.
  if (std::any_of(_lines.begin(), _lines.end(), isOffering)) {
    return;
  }
  const bool hasMessages = std::any_of(_lines.begin(), _lines.end(), isWaiting);
  if (_state != State::Open || (hasMessages && owner.hasReceivers())) {
    _turn.plan();
  } else {
    _turn.cancel();
  }
}

void Connection::peerHasGone() {
  if (_state != State::Open) {
    return;
  }
  _state = State::Draining;
  for (Line &line : _lines) {
    line.input = Channel::Input::More; // Until receiving has shown that nothing is left.
  }
  _turn.plan();
}

/// The owner is told in a later turn, never from inside the call that brought it about.
void Connection::end() {
  if (_state != State::Open && _state != State::Draining) {
    return;
  }
  _state = State::Ending;
  for (Line &line : _lines) {
    line.channel->shutdown();
  }
  _turn.plan();
}

int Connection::disconnect() {
  if (_state == State::Closed) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  end();
  return RPC_PORT_ERROR_NONE;
}

int Connection::send(rpc_port_port_type_e type, OutgoingMessage &message) {
  if (_state != State::Open) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  switch (_lines[type].channel->send(message)) {
  case SendOutcome::Taken:
    return RPC_PORT_ERROR_NONE;
  case SendOutcome::Overflow:
    dlog_print(DLOG_WARN, kLogTag, "a peer does not read what it is sent: it is disconnected");
    end();
    break;
  case SendOutcome::Broken:
    peerHasGone();
    break;
  }
  return RPC_PORT_ERROR_IO_ERROR;
}

/// A handler may run a loop of its own, and no end of its turn plans the next for that.
void Connection::hasTaken(Line &line) {
  if (!line.isWatched) {
    return;
  }
  const bool isEmpty = line.channel->inbox().empty();
  line.channel->setReading(isEmpty);
  if (!isEmpty) {
    _turn.plan();
  }
}

int Connection::takeParcel(rpc_port_port_type_e type, Buffer &payload) {
  Line &line = _lines[type];
  Inbox &inbox = line.channel->inbox();
  const auto hasFrame = [&inbox] { return !inbox.empty(); };
  if (!await(line, hasFrame) || inbox.front().kind != FrameKind::Parcel) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  payload = inbox.pop().payload;
  hasTaken(line);
  return RPC_PORT_ERROR_NONE;
}

int Connection::readRaw(rpc_port_port_type_e type, unsigned char *bytes, std::size_t size) {
  Line &line = _lines[type];
  Inbox &inbox = line.channel->inbox();
  if (!await(line, [&inbox, size] { return inbox.hasRaw(size); })) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  inbox.readRaw(bytes, size);
  hasTaken(line);
  return RPC_PORT_ERROR_NONE;
}

/**
 * Receives until it is there, or cannot be. The loop's ports do not wait, they have their event;
 * a proxy's main port, where the loop does not look, waits a bounded time for the answer.
 */
template <typename Condition>
bool Connection::await(Line &line, Condition isThere) {
  if (_state == State::Ending || _state == State::Closed) {
    return false;
  }
  const Deadline deadline(kReplySeconds);
  while (!isThere() && !deadline.isOver()) {
    const bool hasEnded = line.channel->receive() == Channel::Input::Ended;
    if (hasEnded) {
      peerHasGone();
    }
    if (isThere() || hasEnded || line.isWatched) {
      break;
    }
    (void)line.channel->waitForInput(deadline.secondsLeft());
  }
  return isThere();
}

} // namespace platform::rpc_port
