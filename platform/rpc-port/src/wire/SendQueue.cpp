// SPDX-License-Identifier: Apache-2.0
#include "wire/SendQueue.h"

#include "common/bounds.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace platform::rpc_port {

namespace {

/// @return How many bytes the socket has taken, or -1: the peer is gone.
ssize_t sendSome(int socket, iovec *parts, std::size_t count) {
  msghdr message = {};
  message.msg_iov = parts;
  message.msg_iovlen = count;
  ssize_t sent = 0;
  do {
    sent = sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (sent < 0 && errno == EINTR);
  const bool isFull = sent < 0 && (errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM);
  return isFull ? 0 : sent;
}

} // namespace

SendOutcome SendQueue::send(int socket, OutgoingMessage &message) {
  if (!empty()) {
    return keepBehindOthers(socket, message);
  }
  const ssize_t sent = sendSome(socket, message.parts(), message.count());
  if (sent < 0) {
    return SendOutcome::Broken;
  }
  if (static_cast<std::size_t>(sent) < message.size()) {
    message.skip(static_cast<std::size_t>(sent));
    keep(message);
    _leading = _size;
  }
  return SendOutcome::Taken;
}

SendOutcome SendQueue::keepBehindOthers(int socket, OutgoingMessage &message) {
  const auto isFull = [&] { return _size - _leading + message.size() > kMaxQueued; };
  // An application that sends without returning to its loop leaves the flushing to us.
  if (isFull() && !flush(socket)) {
    return SendOutcome::Broken;
  }
  if (empty()) {
    return send(socket, message);
  }
  if (isFull()) {
    return SendOutcome::Overflow;
  }
  keep(message);
  return SendOutcome::Taken;
}

void SendQueue::keep(OutgoingMessage &message) {
  for (std::size_t i = 0; i < message.count(); ++i) {
    const iovec &part = message.parts()[i];
    const bool isLast = i + 1 == message.count();
    if (isLast && message.shared() != nullptr && part.iov_len >= kShareFrom) {
      Buffer shared = message.shared()->share();
      const std::size_t sent = shared.size() - part.iov_len;
      _segments.push_back({std::move(shared), sent, true});
      _size += part.iov_len;
    } else {
      keepCopy(part.iov_base, part.iov_len);
    }
  }
}

void SendQueue::keepCopy(const void *bytes, std::size_t size) {
  if (size == 0) {
    return;
  }
  if (_segments.empty() || _segments.back().isShared
      || _segments.back().bytes.size() >= kShareFrom) {
    _segments.push_back({Buffer(), 0, false});
  }
  _segments.back().bytes.append(bytes, size);
  _size += size;
}

bool SendQueue::flush(int socket) {
  while (!empty()) {
    Segment &segment = _segments.front();
    iovec rest = {const_cast<unsigned char *>(segment.bytes.data()) + segment.sent,
                  segment.bytes.size() - segment.sent};
    const ssize_t sent = sendSome(socket, &rest, 1);
    if (sent < 0) {
      return false;
    }
    const auto size = static_cast<std::size_t>(sent);
    _size -= size;
    _leading -= std::min(_leading, size);
    segment.sent += size;
    if (segment.sent < segment.bytes.size()) {
      return true;
    }
    _segments.erase(_segments.begin());
  }
  return true;
}

void SendQueue::clear() {
  _segments.clear();
  _size = _leading = 0;
}

} // namespace platform::rpc_port
