// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_WIRE_PARCEL_H
#define PLATFORM_RPC_PORT_WIRE_PARCEL_H

#include "wire/Buffer.h"
#include "wire/Frame.h"
#include "wire/OutgoingMessage.h"

#include <bundle.h>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

namespace platform::rpc_port {

/// The object behind an rpc_port_parcel_header_h: what is sent with a parcel besides its fields.
struct ParcelHeader {
  std::string tag;
  std::int32_t sequenceNumber = 0;
  timespec timestamp = {};
};

/// A parcel header in wire format; the tag's bytes follow.
struct WireHeader {
  std::uint32_t tagSize;
  std::int32_t sequenceNumber;
  std::int64_t seconds;
  std::int64_t nanoseconds;
};
static_assert(sizeof(WireHeader) == kParcelHeaderSize, "the header travels as it lies in memory");

/// A sequence of fields, appended by writes and consumed by reads. A failed read changes nothing.
class Parcel {
public:
  /// Creates an empty parcel with the current time.
  Parcel();

  /// Makes a parcel of a received payload, which it takes over.
  /// @return The parcel, or nullptr when the header is malformed.
  /// @throw std::bad_alloc, and the payload is as it was.
  static std::unique_ptr<Parcel> fromWire(Buffer &payload);

  ParcelHeader &header() { return _header; }
  WireHeader wireHeader() const;
  void addFieldsTo(OutgoingMessage &message) { message.addShared(_bytes, _begin); }

  /// @return false: the parcel would become longer than a message can be.
  bool hasRoomFor(std::size_t size) const;
  bool writeBytes(const void *bytes, std::size_t size);
  bool writeString(std::string_view text);
  bool writeBundle(bundle *b);
  template <typename Value>
  bool write(Value value) {
    return writeBytes(&value, sizeof value);
  }

  bool readBytes(void *bytes, std::size_t size);
  bool readBool(bool *value);
  bool readArrayCount(std::int32_t *count);
  /// @param text A copy that is released with free(). @return An rpc_port_error_e.
  int readString(char **text);
  /// @param b Released with bundle_free(). @return An rpc_port_error_e.
  int readBundle(bundle **b);
  template <typename Value>
  bool read(Value *value) {
    return readBytes(value, sizeof *value);
  }

  /// The whole parcel in wire format, without the frame; valid until the next call.
  const Buffer &raw();

private:
  /// Tag of the constructor of a received parcel, whose time is the sender's.
  struct Received {};

  explicit Parcel(Received /*tag*/) {}
  bool decodeHeader(const Buffer &payload);
  std::size_t fieldsSize() const { return _bytes.size() - _begin; }
  std::size_t left() const { return _bytes.size() - _position; }
  const unsigned char *peekSized(std::size_t &size) const;

  ParcelHeader _header;
  Buffer _bytes; // As received, the header included, or just what has been written.
  std::size_t _begin = 0;
  std::size_t _position = 0;
  Buffer _raw;
};

} // namespace platform::rpc_port

#endif
