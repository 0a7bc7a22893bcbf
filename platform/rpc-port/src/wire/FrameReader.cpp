// SPDX-License-Identifier: Apache-2.0
#include "wire/FrameReader.h"

#include "common/bounds.h"
#include "wire/Hello.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace platform::rpc_port {

namespace {

/// The shared receive buffer: all sockets are read on the loop's thread, one after the other.
std::array<unsigned char, kScratchSize> scratch;

bool isPlausible(const FramePrefix &prefix) {
  switch (prefix.kind) {
  case FrameKind::Hello:
    return prefix.size >= kHelloHeadSize && prefix.size <= kMaxHello;
  case FrameKind::Welcome:
    return prefix.size == kWelcomeSize;
  case FrameKind::Parcel:
    return prefix.size >= kParcelHeaderSize && prefix.size <= kMaxMessage;
  case FrameKind::Raw:
    return prefix.size >= 1 && prefix.size <= kMaxMessage;
  }
  return false;
}

} // namespace

FrameReader::Space FrameReader::space() {
  _isDirect = _hasPrefix && missing() >= kDirectReceive;
  if (!_isDirect) {
    return {scratch.data(), scratch.size()};
  }
  reserve(0);
  return {_frame.payload.room(), std::min(missing(), _frame.payload.roomSize())};
}

bool FrameReader::take(std::size_t size, Inbox &inbox) {
  if (_isDirect) {
    _frame.payload.take(size);
    finishIfWhole(inbox);
    return true;
  }
  const unsigned char *bytes = scratch.data();
  while (size > 0) {
    if (!_hasPrefix && !takePrefix(bytes, size)) {
      return false;
    }
    if (_hasPrefix) {
      takePayload(bytes, size);
      finishIfWhole(inbox);
    }
  }
  return true;
}

/// @return false for a prefix that no peer of ours sends.
bool FrameReader::takePrefix(const unsigned char *&bytes, std::size_t &size) {
  const std::size_t part = std::min(size, _partialPrefix.size() - _prefixBytes);
  std::memcpy(_partialPrefix.data() + _prefixBytes, bytes, part);
  bytes += part;
  size -= part;
  _prefixBytes += part;
  return _prefixBytes < _partialPrefix.size() || accept();
}

bool FrameReader::accept() {
  std::memcpy(&_prefix, _partialPrefix.data(), sizeof _prefix);
  const bool isGreeting = _prefix.kind == FrameKind::Hello || _prefix.kind == FrameKind::Welcome;
  const bool inTurn = _isGreeted ? !isGreeting : _prefix.kind == _greeting;
  if (!inTurn || !isPlausible(_prefix)) {
    return false;
  }
  _isGreeted = true;
  _hasPrefix = true;
  _prefixBytes = 0;
  _frame.kind = _prefix.kind;
  return true;
}

void FrameReader::takePayload(const unsigned char *&bytes, std::size_t &size) {
  const std::size_t part = std::min(size, missing());
  reserve(part);
  _frame.payload.append(bytes, part);
  bytes += part;
  size -= part;
}

/// Grows the payload geometrically with what has arrived, so that a long frame is seldom moved.
void FrameReader::reserve(std::size_t arrived) {
  const std::size_t needed = _frame.payload.size() + arrived;
  if (arrived > _frame.payload.roomSize() || _frame.payload.roomSize() == 0) {
    const std::size_t wanted = std::max(2 * needed, kScratchSize);
    _frame.payload.reserve(std::min<std::size_t>(_prefix.size, wanted));
  }
}

void FrameReader::finishIfWhole(Inbox &inbox) {
  if (missing() == 0) {
    inbox.push(std::exchange(_frame, Frame()));
    _hasPrefix = false;
  }
}

} // namespace platform::rpc_port
