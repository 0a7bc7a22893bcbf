// SPDX-License-Identifier: Apache-2.0
//
// <rpc-port-parcel.h>: a parcel is a list of typed fields.
#include "fakes/Platform.h"

#include <rpc-port-parcel.h>

using fake::ParcelHandle;
using fake::platform;
using fake::PlatformCall;
using fake::PortHandle;

namespace {

// The library goes on with a parcel that could not be made: a null handle is answered with an
// error. Any other handle that is not alive is a misuse.
fake::FakeParcel *usedParcel(const char *function, rpc_port_parcel_h handle) {
  fake::FakeParcel *parcel = platform().ports.findParcel(handle);
  if (parcel == nullptr && handle != nullptr) {
    platform().misuses.push_back(std::string(function) + " with a parcel that is not alive");
  }
  return parcel;
}

int write(const char *function, const PlatformCall &call, rpc_port_parcel_h handle,
          fake::Field field) {
  fake::FakeParcel *parcel = usedParcel(function, handle);
  if (call.failure()) {
    return *call.failure();
  }
  if (parcel == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  parcel->fields.push_back(std::move(field));
  return RPC_PORT_ERROR_NONE;
}

// The next field, if it is of this type; the reading position moves only then.
template <typename Type>
int read(const char *function, rpc_port_parcel_h handle, const Type **field) {
  const PlatformCall call(function, ParcelHandle{handle});
  fake::FakeParcel *parcel = usedParcel(function, handle);
  if (call.failure()) {
    return *call.failure();
  }
  if (parcel == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  if (parcel->read == parcel->fields.size()) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  *field = std::get_if<Type>(&parcel->fields[parcel->read]);
  if (*field == nullptr) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  ++parcel->read;
  return RPC_PORT_ERROR_NONE;
}

} // namespace

extern "C" {

int rpc_port_parcel_create(rpc_port_parcel_h *h) {
  const PlatformCall call("rpc_port_parcel_create");
  if (call.failure()) {
    return *call.failure();
  }
  *h = platform().ports.createParcel({});
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_create_from_port(rpc_port_parcel_h *h, rpc_port_h port) {
  const PlatformCall call("rpc_port_parcel_create_from_port", PortHandle{port});
  fake::FakePort *found = platform().ports.findPort(port);
  if (call.failure()) {
    return *call.failure();
  }
  if (found == nullptr || found->incoming.empty()) {
    return RPC_PORT_ERROR_IO_ERROR;
  }
  *h = platform().ports.createParcel(std::move(found->incoming.front()));
  found->incoming.pop_front();
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_send(rpc_port_parcel_h h, rpc_port_h port) {
  const PlatformCall call("rpc_port_parcel_send", ParcelHandle{h}, PortHandle{port});
  fake::FakePort *found = platform().ports.findPort(port);
  const fake::FakeParcel *parcel = usedParcel("rpc_port_parcel_send", h);
  if (call.failure()) {
    return *call.failure();
  }
  if (found == nullptr || parcel == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  found->sent.push_back(parcel->fields);
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_destroy(rpc_port_parcel_h h) {
  const PlatformCall call("rpc_port_parcel_destroy", ParcelHandle{h});
  if (usedParcel("rpc_port_parcel_destroy", h) == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  (void)platform().ports.destroyParcel(h);
  return call.failure().value_or(RPC_PORT_ERROR_NONE);
}

int rpc_port_parcel_write_int32(rpc_port_parcel_h h, int i) {
  const PlatformCall call("rpc_port_parcel_write_int32", ParcelHandle{h}, i);
  return write("rpc_port_parcel_write_int32", call, h, fake::Int32{i});
}

int rpc_port_parcel_write_bool(rpc_port_parcel_h h, bool b) {
  const PlatformCall call("rpc_port_parcel_write_bool", ParcelHandle{h}, b);
  return write("rpc_port_parcel_write_bool", call, h, fake::Bool{b});
}

int rpc_port_parcel_write_string(rpc_port_parcel_h h, const char *str) {
  const PlatformCall call("rpc_port_parcel_write_string", ParcelHandle{h}, str);
  if (str == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return write("rpc_port_parcel_write_string", call, h, fake::Text{str});
}

int rpc_port_parcel_write_bundle(rpc_port_parcel_h h, bundle *b) {
  const PlatformCall call("rpc_port_parcel_write_bundle", ParcelHandle{h}, b);
  if (b == nullptr) {
    return RPC_PORT_ERROR_INVALID_PARAMETER;
  }
  return write("rpc_port_parcel_write_bundle", call, h, fake::BundleOf{fake::contentsOf(b)});
}

int rpc_port_parcel_read_int32(rpc_port_parcel_h h, int *i) {
  const fake::Int32 *field = nullptr;
  const int result = read("rpc_port_parcel_read_int32", h, &field);
  if (field != nullptr) {
    *i = field->value;
  }
  return result;
}

int rpc_port_parcel_read_bool(rpc_port_parcel_h h, bool *b) {
  const fake::Bool *field = nullptr;
  const int result = read("rpc_port_parcel_read_bool", h, &field);
  if (field != nullptr) {
    *b = field->value;
  }
  return result;
}

int rpc_port_parcel_read_bundle(rpc_port_parcel_h h, bundle **b) {
  const fake::BundleOf *field = nullptr;
  const int result = read("rpc_port_parcel_read_bundle", h, &field);
  if (field != nullptr) {
    const fake::OutsideLibrary outside;
    *b = platform().bundles.create(field->contents);
  }
  return result;
}
}
