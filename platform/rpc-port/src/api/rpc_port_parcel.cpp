// SPDX-License-Identifier: Apache-2.0
#include <rpc-port-parcel.h>

#include "api/arguments.h"
#include "common/bounds.h"
#include "connection/Connection.h"
#include "registry/Ports.h"
#include "wire/Parcel.h"

#include <cstring>

namespace rpc = platform::rpc_port;

namespace {

rpc::Parcel *toParcel(rpc_port_parcel_h h) {
  return static_cast<rpc::Parcel *>(h);
}

rpc::ParcelHeader *toHeader(rpc_port_parcel_header_h header) {
  return static_cast<rpc::ParcelHeader *>(header);
}

int toResult(bool done) {
  return done ? RPC_PORT_ERROR_NONE : RPC_PORT_ERROR_IO_ERROR;
}

/// Checks the arguments and runs a write; `has` says whether the arguments besides the handle are
/// valid.
template <typename Write>
int write(rpc_port_parcel_h h, bool has, Write write) {
  if (h == nullptr || !has) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] { return toResult(write(*toParcel(h))); });
}

template <typename Value>
int writeValue(rpc_port_parcel_h h, Value value) {
  return write(h, true, [value](rpc::Parcel &parcel) { return parcel.write(value); });
}

template <typename Value>
int readValue(rpc_port_parcel_h h, Value *value) {
  if (h == nullptr || value == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toResult(toParcel(h)->read(value));
}

} // namespace

int rpc_port_parcel_create(rpc_port_parcel_h *h) {
  if (h == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([h] {
    *h = new rpc::Parcel;
    return RPC_PORT_ERROR_NONE;
  });
}

int rpc_port_parcel_create_from_port(rpc_port_parcel_h *h, rpc_port_h port) {
  if (h == nullptr || port == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  const rpc::Port *found = rpc::ports().find(port);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  const rpc::Port kept = *found; // Taking the parcel may end the connection.
  return rpc::guarded([&]() -> int {
    std::unique_ptr<rpc::Parcel> parcel;
    const int error = kept.connection->takeParcel(kept.type, parcel);
    if (error == RPC_PORT_ERROR_NONE) {
      *h = parcel.release();
    }
    return error;
  });
}

int rpc_port_parcel_create_from_raw(rpc_port_parcel_h *h, const void *raw, unsigned int size) {
  if (h == nullptr || raw == nullptr || size > rpc::kMaxMessage) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&]() -> int {
    rpc::Buffer payload;
    payload.reserve(size);
    payload.append(raw, size);
    auto parcel = rpc::Parcel::fromWire(payload);
    if (parcel == nullptr) {
      return RPC_PORT_ERROR_INVALID_PARAMETER;
    }
    *h = parcel.release();
    return RPC_PORT_ERROR_NONE;
  });
}

int rpc_port_parcel_send(rpc_port_parcel_h h, rpc_port_h port) {
  if (h == nullptr || port == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  const rpc::Port *found = rpc::ports().find(port);
  if (found == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  rpc::Parcel &parcel = *toParcel(h);
  const rpc::WireHeader header = parcel.wireHeader();
  rpc::OutgoingMessage message(rpc::FrameKind::Parcel);
  message.add(&header, sizeof header);
  message.add(parcel.header().tag.data(), parcel.header().tag.size());
  parcel.addFieldsTo(message);
  return found->connection->send(found->type, message);
}

int rpc_port_parcel_destroy(rpc_port_parcel_h h) {
  if (h == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  delete toParcel(h);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_write_byte(rpc_port_parcel_h h, char b) {
  return writeValue(h, b);
}

int rpc_port_parcel_write_int16(rpc_port_parcel_h h, short i) {
  return writeValue(h, i);
}

int rpc_port_parcel_write_int32(rpc_port_parcel_h h, int i) {
  return writeValue(h, i);
}

int rpc_port_parcel_write_int64(rpc_port_parcel_h h, long long i) {
  return writeValue(h, i);
}

int rpc_port_parcel_write_float(rpc_port_parcel_h h, float f) {
  return writeValue(h, f);
}

int rpc_port_parcel_write_double(rpc_port_parcel_h h, double d) {
  return writeValue(h, d);
}

int rpc_port_parcel_write_bool(rpc_port_parcel_h h, bool b) {
  return writeValue(h, static_cast<unsigned char>(b ? 1 : 0));
}

int rpc_port_parcel_write_array_count(rpc_port_parcel_h h, int count) {
  return count < 0 ? RPC_PORT_ERROR_INVALID_PARAMETER : writeValue(h, count);
}

int rpc_port_parcel_write_string(rpc_port_parcel_h h, const char *str) {
  return write(h, str != nullptr, [str](rpc::Parcel &parcel) { return parcel.writeString(str); });
}

int rpc_port_parcel_write_bundle(rpc_port_parcel_h h, bundle *b) {
  return write(h, b != nullptr, [b](rpc::Parcel &parcel) { return parcel.writeBundle(b); });
}

int rpc_port_parcel_burst_write(rpc_port_parcel_h h, const unsigned char *buf, unsigned int size) {
  return write(h, buf != nullptr && size > 0,
               [buf, size](rpc::Parcel &parcel) { return parcel.writeBytes(buf, size); });
}

int rpc_port_parcel_write(rpc_port_parcel_h h, rpc_port_parcelable_t *parcelable, void *data) {
  if (h == nullptr || parcelable == nullptr || parcelable->to == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  parcelable->to(h, data);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_read_byte(rpc_port_parcel_h h, char *b) {
  return readValue(h, b);
}

int rpc_port_parcel_read_int16(rpc_port_parcel_h h, short *i) {
  return readValue(h, i);
}

int rpc_port_parcel_read_int32(rpc_port_parcel_h h, int *i) {
  return readValue(h, i);
}

int rpc_port_parcel_read_int64(rpc_port_parcel_h h, long long *i) {
  return readValue(h, i);
}

int rpc_port_parcel_read_float(rpc_port_parcel_h h, float *f) {
  return readValue(h, f);
}

int rpc_port_parcel_read_double(rpc_port_parcel_h h, double *d) {
  return readValue(h, d);
}

int rpc_port_parcel_read_bool(rpc_port_parcel_h h, bool *b) {
  if (h == nullptr || b == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toResult(toParcel(h)->readBool(b));
}

int rpc_port_parcel_read_array_count(rpc_port_parcel_h h, int *count) {
  if (h == nullptr || count == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toResult(toParcel(h)->readArrayCount(count));
}

int rpc_port_parcel_read_string(rpc_port_parcel_h h, char **str) {
  if (h == nullptr || str == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toParcel(h)->readString(str);
}

int rpc_port_parcel_read_bundle(rpc_port_parcel_h h, bundle **b) {
  if (h == nullptr || b == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toParcel(h)->readBundle(b);
}

int rpc_port_parcel_burst_read(rpc_port_parcel_h h, unsigned char *buf, unsigned int size) {
  if (h == nullptr || buf == nullptr || size == 0) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return toResult(toParcel(h)->readBytes(buf, size));
}

int rpc_port_parcel_read(rpc_port_parcel_h h, rpc_port_parcelable_t *parcelable, void *data) {
  if (h == nullptr || parcelable == nullptr || parcelable->from == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  parcelable->from(h, data);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_get_header(rpc_port_parcel_h h, rpc_port_parcel_header_h *header) {
  if (h == nullptr || header == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  *header = &toParcel(h)->header();
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_header_set_tag(rpc_port_parcel_header_h header, const char *tag) {
  if (header == nullptr || tag == nullptr || std::strlen(tag) > rpc::kMaxTag) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    toHeader(header)->tag = tag;
    return RPC_PORT_ERROR_NONE;
  });
}

int rpc_port_parcel_header_get_tag(rpc_port_parcel_header_h header, char **tag) {
  if (header == nullptr || tag == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  char *copy = strdup(toHeader(header)->tag.c_str());
  if (copy == nullptr) {
    return RPC_PORT_ERROR_OUT_OF_MEMORY;
  }
  *tag = copy;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_header_set_seq_num(rpc_port_parcel_header_h header, int seq_num) {
  if (header == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  toHeader(header)->sequenceNumber = seq_num;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_header_get_seq_num(rpc_port_parcel_header_h header, int *seq_num) {
  if (header == nullptr || seq_num == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  *seq_num = toHeader(header)->sequenceNumber;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_header_get_timestamp(rpc_port_parcel_header_h header,
                                         struct timespec *timestamp) {
  if (header == nullptr || timestamp == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  *timestamp = toHeader(header)->timestamp;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_get_raw(rpc_port_parcel_h h, void **raw, unsigned int *size) {
  if (h == nullptr || raw == nullptr || size == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return rpc::guarded([&] {
    const rpc::Buffer &bytes = toParcel(h)->raw();
    *raw = const_cast<unsigned char *>(bytes.data());
    *size = static_cast<unsigned int>(bytes.size());
    return RPC_PORT_ERROR_NONE;
  });
}
