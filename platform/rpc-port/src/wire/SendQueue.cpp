// SPDX-License-Identifier: Apache-2.0
#include "wire/SendQueue.h"

#include "common/bounds.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace platform::rpc_port {

namespace {

/// Frames up to this size are sent as one piece: copying so few bytes costs less than the kernel
/// needs to read an iovec list.
constexpr std::size_t kOnePiece = 2048;

/// Calls until no signal interrupts. @return How many bytes the socket has taken, or -1: the peer
/// is gone.
template <typename Call>
ssize_t sent(Call call) {
  ssize_t taken = 0;
  do {
    taken = call();
  } while (taken < 0 && errno == EINTR);
  const bool isFull = taken < 0 && (errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM);
  return isFull ? 0 : taken;
}

ssize_t sendPiece(int socket, const void *bytes, std::size_t size) {
  return sent([=] { return ::send(socket, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

ssize_t sendInOnePiece(int socket, OutgoingMessage &message) {
  std::array<unsigned char, kOnePiece> piece; // Not initialised: what is sent is written first.
  unsigned char *end = piece.data();
  for (std::size_t i = 0; i < message.count(); ++i) {
    const iovec &part = message.parts()[i];
    end = std::copy_n(static_cast<const unsigned char *>(part.iov_base), part.iov_len, end);
  }
  return sendPiece(socket, piece.data(), message.size());
}

ssize_t sendParts(int socket, OutgoingMessage &message) {
  msghdr header = {};
  header.msg_iov = message.parts();
  header.msg_iovlen = message.count();
  return sent([&] { return sendmsg(socket, &header, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

} // namespace

SendOutcome SendQueue::send(int socket, OutgoingMessage &message) {
  if (!empty()) {
    return keepBehindOthers(socket, message);
  }
  const ssize_t taken =
      message.size() <= kOnePiece ? sendInOnePiece(socket, message) : sendParts(socket, message);
  if (taken < 0) {
    return SendOutcome::Broken;
  }
  if (static_cast<std::size_t>(taken) < message.size()) {
    message.skip(static_cast<std::size_t>(taken));
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
    const ssize_t taken =
        sendPiece(socket, segment.bytes.data() + segment.sent, segment.bytes.size() - segment.sent);
    if (taken < 0) {
      return false;
    }
    const auto size = static_cast<std::size_t>(taken);
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
