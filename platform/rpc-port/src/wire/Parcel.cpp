// SPDX-License-Identifier: Apache-2.0
#include "wire/Parcel.h"

#include "common/bounds.h"

#include <bundle_wire.h>
#include <cstdlib>
#include <rpc-port.h>

namespace platform::rpc_port {

namespace {

constexpr long kNanosecondsPerSecond = 1000000000;

} // namespace

Parcel::Parcel() {
  (void)clock_gettime(CLOCK_MONOTONIC_RAW, &_header.timestamp);
}

std::unique_ptr<Parcel> Parcel::fromWire(Buffer &payload) {
  std::unique_ptr<Parcel> parcel(new Parcel(Received()));
  if (!parcel->decodeHeader(payload)) {
    return nullptr;
  }
  parcel->_bytes = std::move(payload);
  return parcel;
}

bool Parcel::decodeHeader(const Buffer &payload) {
  WireHeader wire{};
  if (payload.size() < sizeof wire) {
    return false;
  }
  std::memcpy(&wire, payload.data(), sizeof wire);
  if (wire.tagSize > kMaxTag || wire.tagSize > payload.size() - sizeof wire || wire.nanoseconds < 0
      || wire.nanoseconds >= kNanosecondsPerSecond) {
    return false;
  }
  const auto *tag = reinterpret_cast<const char *>(payload.data()) + sizeof wire;
  if (std::memchr(tag, '\0', wire.tagSize) != nullptr) {
    return false;
  }
  if (wire.tagSize > 0) {
    _header.tag.assign(tag, wire.tagSize);
  }
  _header.sequenceNumber = wire.sequenceNumber;
  _header.timestamp.tv_sec = static_cast<time_t>(wire.seconds);
  _header.timestamp.tv_nsec = static_cast<long>(wire.nanoseconds);
  _begin = _position = sizeof wire + wire.tagSize;
  return true;
}

WireHeader Parcel::wireHeader() const {
  return {static_cast<std::uint32_t>(_header.tag.size()), _header.sequenceNumber,
          _header.timestamp.tv_sec, _header.timestamp.tv_nsec};
}

bool Parcel::hasRoomFor(std::size_t size) const {
  const std::size_t taken = kParcelHeaderSize + kMaxTag + fieldsSize();
  return size <= kMaxMessage && taken + size <= kMaxMessage;
}

bool Parcel::writeBytes(const void *bytes, std::size_t size) {
  if (!hasRoomFor(size)) {
    return false;
  }
  _bytes.append(bytes, size);
  return true;
}

/// The length counts the NUL, which is sent too: the reader can use the text in place.
bool Parcel::writeString(std::string_view text) {
  const std::size_t size = text.size() + 1;
  if (!hasRoomFor(sizeof(std::uint32_t) + size)) {
    return false;
  }
  write(static_cast<std::uint32_t>(size));
  unsigned char *place = _bytes.extend(size);
  std::memcpy(place, text.data(), text.size());
  place[text.size()] = '\0';
  return true;
}

/// Most bundles fit into the reserved room; they are traversed once instead of twice.
bool Parcel::writeBundle(bundle *b) {
  const std::size_t before = _bytes.size();
  unsigned char *length = _bytes.extend(sizeof(std::uint32_t));
  const std::size_t room = _bytes.roomSize();
  const std::size_t size = bundle_wire::writeWithin(b, _bytes.room(), room);
  if (size == 0 || !hasRoomFor(size)) {
    _bytes.truncate(before);
    return false;
  }
  const auto wireSize = static_cast<std::uint32_t>(size);
  std::memcpy(length, &wireSize, sizeof wireSize);
  if (size > room) {
    bundle_wire::write(b, _bytes.extend(size));
  } else {
    _bytes.take(size);
  }
  return true;
}

bool Parcel::readBytes(void *bytes, std::size_t size) {
  if (size > left()) {
    return false;
  }
  std::memcpy(bytes, _bytes.data() + _position, size);
  _position += size;
  return true;
}

/// @return The bytes behind the length at the position, which stays; nullptr when they are cut off.
const unsigned char *Parcel::peekSized(std::size_t &size) const {
  std::uint32_t length = 0;
  if (sizeof length > left()) {
    return nullptr;
  }
  std::memcpy(&length, _bytes.data() + _position, sizeof length);
  size = length;
  const bool isWhole = size <= left() - sizeof length;
  return isWhole ? _bytes.data() + _position + sizeof length : nullptr;
}

/// Any byte but 0 and 1 is refused.
bool Parcel::readBool(bool *value) {
  if (left() == 0 || _bytes.data()[_position] > 1) {
    return false;
  }
  *value = _bytes.data()[_position++] == 1;
  return true;
}

bool Parcel::readArrayCount(std::int32_t *count) {
  const std::size_t before = _position;
  std::int32_t value = 0;
  if (!read(&value) || value < 0) {
    _position = before;
    return false;
  }
  *count = value;
  return true;
}

int Parcel::readString(char **text) {
  std::size_t size = 0;
  const unsigned char *bytes = peekSized(size);
  // A text ends at its first NUL, which has to be the last byte.
  if (bytes == nullptr || size == 0 || std::memchr(bytes, '\0', size) != bytes + size - 1) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  auto *copy = static_cast<char *>(std::malloc(size));
  if (copy == nullptr) {
    return RPC_PORT_ERROR_OUT_OF_MEMORY;
  }
  *text = static_cast<char *>(std::memcpy(copy, bytes, size));
  _position += sizeof(std::uint32_t) + size;
  return RPC_PORT_ERROR_NONE;
}

int Parcel::readBundle(bundle **b) {
  std::size_t size = 0;
  const unsigned char *bytes = peekSized(size);
  if (bytes == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  bundle *read = bundle_wire::read(bytes, size);
  if (read == nullptr) {
    const bool isMemory = get_last_result() == BUNDLE_ERROR_OUT_OF_MEMORY;
    return isMemory ? RPC_PORT_ERROR_OUT_OF_MEMORY : RPC_PORT_ERROR_IO_ERROR;
  }
  *b = read;
  _position += sizeof(std::uint32_t) + size;
  return RPC_PORT_ERROR_NONE;
}

const Buffer &Parcel::raw() {
  const WireHeader wire = wireHeader();
  Buffer raw;
  raw.reserve(sizeof wire + _header.tag.size() + fieldsSize());
  raw.append(&wire, sizeof wire);
  raw.append(_header.tag.data(), _header.tag.size());
  raw.append(_bytes.data() + _begin, fieldsSize());
  _raw = std::move(raw);
  return _raw;
}

} // namespace platform::rpc_port
