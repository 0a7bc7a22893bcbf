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
    : _socket(std::move(socket)), _watch(*this), _reader(greeting) {
  (void)setsockopt(_socket.get(), SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof kSocketBuffer);
}

bool Channel::attach(Listener &listener, bool reading) {
  _listener = &listener;
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

void Channel::descriptorReady(FdWatch::Events events) {
  _listener->channelReady(*this, events);
}

/// One call for all that is there, as long as that fits into the buffer: a short count is the end.
Channel::Input Channel::receive() try {
  for (std::size_t total = 0; !_hasEnded && total < kBytesPerTurn;) {
    const FrameReader::Space space = _reader.space();
    const ssize_t received = receiveInto(_socket.get(), space);
    if (received == kNothingThere) {
      return Input::Drained;
    }
    _hasEnded = received == kEnd || !takeIn(static_cast<std::size_t>(received));
    if (!_hasEnded && static_cast<std::size_t>(received) < space.size) {
      return Input::Drained;
    }
    total += space.size;
  }
  return _hasEnded ? Input::Ended : Input::More;
} catch (const std::bad_alloc &) {
  dlog_print(DLOG_ERROR, kLogTag, "no memory for what a peer sends: it is disconnected");
  _hasEnded = true;
  return Input::Ended;
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

void Channel::shutdown() {
  _queue.clear();
  (void)::shutdown(_socket.get(), SHUT_RDWR);
}

void Channel::close() {
  _watch.stop();
  _socket.close();
  _queue.clear();
  _inbox.clear();
  _hasEnded = true;
}

} // namespace platform::rpc_port
