// SPDX-License-Identifier: Apache-2.0
#include "connection/Channel.h"

#include "common/bounds.h"
#include "common/log.h"

#include <cerrno>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace platform::rpc_port {

namespace {

constexpr ssize_t kEnd = 0;
constexpr ssize_t kNothingThere = -1;

/// @return How many bytes came, kEnd when none will any more, or kNothingThere.
ssize_t receiveInto(int socket, FrameReader::Space space) {
  ssize_t received = 0;
  do {
    received = recv(socket, space.bytes, space.size, MSG_DONTWAIT);
  } while (received < 0 && errno == EINTR);
  if (received < 0) {
    return errno == EAGAIN ? kNothingThere : kEnd;
  }
  return received;
}

} // namespace

Channel::Channel(Descriptor socket, FrameKind greeting)
    : _socket(std::move(socket)), _watch(FdWatch::Ready::to<&Channel::onReady>(*this)),
      _reader(greeting) {
  (void)setsockopt(_socket.get(), SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof kSocketBuffer);
}

bool Channel::attach(Listener listener, bool reading) {
  _listener = listener;
  _isReading = reading;
  if (_watch.isRunning()) {
    updateWatch();
    return true;
  }
  return _watch.start(_socket.get(), reading, !_queue.empty());
}

void Channel::setReading(bool reading) {
  _isReading = reading;
  updateWatch();
}

void Channel::onReady(FdWatch::Events events) {
  (*_listener)(*this, events);
}

/// Usually one system call: a short count means that nothing is left.
Channel::Input Channel::receive() try {
  for (std::size_t total = 0; !_end && total < kBytesPerTurn;) {
    const FrameReader::Space space = _reader.space();
    const ssize_t received = receiveInto(_socket.get(), space);
    if (received == kNothingThere) {
      return Input::Drained;
    }
    if (received == kEnd) {
      _end = Input::Closed;
    } else if (!takeIn(static_cast<std::size_t>(received))) {
      _end = Input::Invalid;
    } else if (static_cast<std::size_t>(received) < space.size) {
      return Input::Drained;
    }
    total += space.size;
  }
  return _end.value_or(Input::More);
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "no memory for what a peer sends: it is disconnected");
  _end = Input::Invalid;
  return Input::Invalid;
}

bool Channel::takeIn(std::size_t size) {
  if (_reader.take(size, _inbox)) {
    return true;
  }
  dlog_print(DLOG_WARN, kLogTag, "a peer sends what is no message: it is disconnected");
  return false;
}

SendOutcome Channel::send(OutgoingMessage &message) try {
  const SendOutcome outcome = _queue.send(_socket.get(), message);
  updateWatch();
  return outcome;
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "no memory to keep what a peer does not read yet");
  return SendOutcome::Overflow;
}

bool Channel::flush() {
  const bool isAlive = _queue.flush(_socket.get());
  if (!isAlive) {
    _queue.clear();
  }
  updateWatch();
  return isAlive;
}

bool Channel::waitForInput(double seconds) {
  pollfd entry = {_socket.get(), POLLIN, 0};
  if (!_queue.empty()) {
    entry.events |= POLLOUT;
  }
  const int ready = poll(&entry, 1, static_cast<int>(seconds * 1000) + 1);
  if (ready > 0 && (entry.revents & POLLOUT) != 0) {
    (void)flush();
  }
  return ready != 0;
}

bool Channel::isHungUp() const {
  pollfd entry = {_socket.get(), 0, 0};
  return poll(&entry, 1, 0) == 1;
}

void Channel::finish() {
  _watch.stop();
  _queue.clear();
  _inbox.clear();
  _end = Input::Closed;
  (void)::shutdown(_socket.get(), SHUT_WR);
}

void Channel::close() {
  finish();
  _socket.close();
}

} // namespace platform::rpc_port
