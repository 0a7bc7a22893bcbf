// SPDX-License-Identifier: Apache-2.0
#include "connection/Connection.h"

#include "common/Deadline.h"
#include "common/ScopeExit.h"
#include "common/bounds.h"
#include "common/log.h"
#include "registry/Ports.h"

#include <algorithm>
#include <new>
#include <utility>

namespace platform::rpc_port {

Connection::Connection(ConnectionHandlers handlers, Peer peer, ConnectionEnds ends,
                       bool watchesMain)
    : _handlers(std::move(handlers)),
      _peer(std::move(peer)), _lines{{{std::move(ends.main), watchesMain},
                                      {std::move(ends.callback), true}}},
      _turn(Callback<void()>::to<&Connection::onTurn>(*this)),
      _lonePort(Callback<void()>::to<&Connection::onLonePortIdle>(*this)) {}

bool Connection::open() try {
  for (const auto type : {RPC_PORT_PORT_MAIN, RPC_PORT_PORT_CALLBACK}) {
    _lines[type].port = ports().add({shared_from_this(), type});
  }
  const auto listener = Channel::Listener::to<&Connection::channelReady>(*this);
  return std::all_of(_lines.begin(), _lines.end(), [listener](Line &line) {
    return line.channel->attach(listener, line.isWatched && line.channel->inbox().empty());
  });
} catch (const std::bad_alloc &) {
  return false;
}

void Connection::announceWaiting() {
  planNext();
}

void Connection::close() {
  const auto self = shared_from_this(); // The ports may be all that holds it.
  const bool wasOpen = std::exchange(_state, State::Closed) == State::Open;
  _turn.cancel();
  _lonePort.stop();
  for (Line &line : _lines) {
    ports().remove(std::exchange(line.port, nullptr));
    if (wasOpen && line.end == End::None) {
      (void)line.channel->flush(); // The last chance for what the socket did not take so far.
    }
    line.channel->close();
  }
}

void Connection::channelReady(Channel &channel, FdWatch::Events events) {
  const auto self = shared_from_this();
  Line &line = _lines[&channel == _lines[RPC_PORT_PORT_MAIN].channel.get() ? 0 : 1];
  const bool takesNothing = events.writable && !channel.flush();
  if (takesNothing || events.hungUp) {
    drain();
  }
  if (events.readable) {
    receiveForLoop(line);
  }
  takeTurn();
}

void Connection::onTurn() {
  const auto self = shared_from_this();
  takeTurn();
}

/// Serves this connection in one turn of the loop, and plans the next turn if there is more to do.
void Connection::takeTurn() {
  const auto owner = _handlers.owner.lock();
  if (_state == State::Closed || owner == nullptr) {
    return;
  }
  const ScopeExit next([this] { planNext(); });
  int budget = kMessagesPerTurn;
  for (Line &line : _lines) {
    if (line.end == End::Peer || _state == State::Draining) {
      receiveForLoop(line);
    }
    handOut(line, budget);
  }
  if (isOver()) {
    close();
    _handlers.ended(*this);
  }
}

/// Back-pressure: nothing is received while messages wait to be taken.
void Connection::receiveForLoop(Line &line) {
  if (line.isWatched && line.end != End::Here && line.channel->inbox().empty()) {
    (void)receive(line);
  }
}

Channel::Input Connection::receive(Line &line) {
  const Channel::Input input = line.channel->receive();
  line.input = input;
  if (input == Channel::Input::Closed && !line.channel->isHungUp()) {
    endLine(line, End::Peer);
  } else if (input == Channel::Input::Closed || input == Channel::Input::Invalid) {
    drain();
  }
  return input;
}

void Connection::handOut(Line &line, int &budget) {
  while (line.isWatched && isReceiving() && !line.channel->inbox().empty() && budget > 0
         && offer(line)) {
    --budget;
  }
}

/// @return false when the message is left where it is, for a later turn.
bool Connection::offer(Line &line) {
  Inbox &inbox = line.channel->inbox();
  if (line.isOffering()) {
    return false;
  }
  const std::uint64_t number = inbox.frontNumber();
  const ScopeExit restore([&line, before = line.offered] { line.offered = before; });
  line.offered = number;
  _isUsed = true;

  const int result = _handlers.messageReady(*this, line.port);

  if (result != 0) {
    end();
    return false;
  }
  const bool isTaken = inbox.frontNumber() != number;
  if (!isTaken && _state == State::Draining) {
    // A message that nobody takes must not keep a connection that has no other side any more.
    (void)inbox.pop();
    return true;
  }
  return isTaken;
}

bool Connection::isReceiving() const {
  return (_state == State::Open || _state == State::Draining) && _handlers.hasReceivers();
}

bool Connection::isOver() const {
  if (_state != State::Draining) {
    return _state == State::Ending;
  }
  return !_handlers.hasReceivers()
         || std::all_of(_lines.begin(), _lines.end(),
                        [](const Line &line) { return line.isExhausted(); });
}

/// Plans a turn, and watches for input, if and only if there is something to do.
void Connection::planNext() {
  if (_state == State::Closed) {
    return;
  }
  for (Line &line : _lines) {
    line.channel->setReading(line.isWatched && line.channel->inbox().empty());
  }
  // A handler up the stack runs a loop of its own; its turn plans the next when it is done.
  if (std::any_of(_lines.begin(), _lines.end(),
                  [](const Line &line) { return line.isOffering(); })) {
    return;
  }
  if (needsTurn()) {
    _turn.plan();
  } else {
    _turn.cancel();
  }
}

bool Connection::needsTurn() const {
  if (_state != State::Open) {
    return true;
  }
  const bool hasReceivers = _handlers.hasReceivers();
  return std::any_of(_lines.begin(), _lines.end(), [hasReceivers](const Line &line) {
    const bool isEmpty = line.channel->inbox().empty();
    return isEmpty ? line.end == End::Peer && line.hasMore() : line.isWatched && hasReceivers;
  });
}

/// Ends one port. The peer learns of it by the end of that socket's stream; closing the socket
/// would end the whole connection.
void Connection::endLine(Line &line, End by) {
  if (line.end != End::None || (_state != State::Open && _state != State::Draining)) {
    return;
  }
  line.end = by;
  if (by == End::Peer) {
    line.input = Channel::Input::More; // Until receiving has shown that nothing is left.
    line.channel->detach();
  } else {
    line.input = Channel::Input::Drained;
    ports().remove(std::exchange(line.port, nullptr));
    line.channel->finish();
  }
  const auto hasEnded = [](const Line &one) { return one.end != End::None; };
  const auto isHere = [](const Line &one) { return one.end == End::Here; };
  if (std::all_of(_lines.begin(), _lines.end(), isHere)) {
    end();
  } else if (std::all_of(_lines.begin(), _lines.end(), hasEnded)) {
    drain();
  } else {
    waitForOtherPort();
  }
  _turn.plan();
}

/// Keeps the connection while its other port is used; a peer that never reacts must not keep it for
/// ever.
void Connection::waitForOtherPort() {
  _isUsed = false;
  _lonePort.start(kLonePortSeconds);
  if (!_lonePort.isRunning()) {
    drain(); // There is no memory for a timer.
  }
}

void Connection::onLonePortIdle() {
  if (_isUsed) {
    waitForOtherPort();
  } else {
    drain();
  }
}

/// Ends the connection after what has arrived has been handed out.
void Connection::drain() {
  if (_state != State::Open) {
    return;
  }
  _state = State::Draining;
  _lonePort.stop();
  for (Line &line : _lines) {
    if (line.end == End::None) {
      line.end = End::Peer;
      line.input = Channel::Input::More;
      line.channel->detach();
    }
  }
  _turn.plan();
}

/// Ends the connection at once. The owner is told in a later turn, never from inside the call that
/// ended it.
void Connection::end() {
  if (_state != State::Open && _state != State::Draining) {
    return;
  }
  _state = State::Ending;
  _lonePort.stop();
  for (Line &line : _lines) {
    line.channel->close();
  }
  _turn.plan();
}

int Connection::disconnect(rpc_port_port_type_e type) {
  if (_state != State::Open && _state != State::Draining) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  Line &line = _lines[type];
  line.end = End::None;
  endLine(line, End::Here);
  return RPC_PORT_ERROR_NONE;
}

int Connection::send(rpc_port_port_type_e type, OutgoingMessage &message) {
  Line &line = _lines[type];
  if (_state != State::Open || line.end != End::None) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  _isUsed = true;
  switch (line.channel->send(message)) {
  case SendOutcome::Taken:
    return RPC_PORT_ERROR_NONE;
  case SendOutcome::Overflow:
    dlog_print(DLOG_WARN, kLogTag, "a peer does not read what it is sent: it is disconnected");
    end();
    break;
  case SendOutcome::Broken:
    drain();
    break;
  }
  return RPC_PORT_ERROR_IO_ERROR;
}

/// Called by a handler that may then run a nested loop: the end of the current turn would plan too
/// late.
void Connection::hasTaken(Line &line) {
  _isUsed = true;
  if (!line.isWatched) {
    return;
  }
  const bool isEmpty = line.channel->inbox().empty();
  line.channel->setReading(isEmpty);
  if (!isEmpty) {
    _turn.plan();
  }
}

int Connection::takeParcel(rpc_port_port_type_e type, std::unique_ptr<Parcel> &parcel) {
  Line &line = _lines[type];
  Inbox &inbox = line.channel->inbox();
  const auto hasFrame = [&inbox] { return !inbox.empty(); };
  if (!await(line, hasFrame) || inbox.front().kind != FrameKind::Parcel) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  parcel = Parcel::fromWire(inbox.front().payload);
  (void)inbox.pop();
  hasTaken(line);
  if (parcel == nullptr) {
    dlog_print(DLOG_WARN, kLogTag, "a peer sends what is no parcel: it is disconnected");
    end();
    return RPC_PORT_ERROR_IO_ERROR;
  }
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

/// Receives until the condition holds, or cannot hold any more. A port that raises events does not
/// wait; a proxy's main port, which the loop does not watch, waits a bounded time for the reply.
template <typename Condition>
bool Connection::await(Line &line, Condition isThere) {
  if (_state == State::Ending || _state == State::Closed) {
    return false;
  }
  if (isThere()) {
    return true; // As usual, and without a look at the clock.
  }
  const Deadline deadline(kReplySeconds);
  while (!deadline.isOver()) {
    const Channel::Input input = receive(line);
    const bool hasEnded = input == Channel::Input::Closed || input == Channel::Input::Invalid;
    if (isThere() || hasEnded || line.isWatched) {
      break;
    }
    (void)line.channel->waitForInput(deadline.secondsLeft());
  }
  return isThere();
}

} // namespace platform::rpc_port
