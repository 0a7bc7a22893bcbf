// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Parcel.h"

#include "assistant/client/Error.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace norix::assistant {
namespace {

void require(int result, const char *field) {
  if (result != RPC_PORT_ERROR_NONE) {
    throw Error(Failure::Malformed, std::string("malformed message: no ") + field);
  }
}

void checkWritten(int result) {
  if (result != RPC_PORT_ERROR_NONE) {
    throw std::bad_alloc();
  }
}

} // namespace

Parcel::Parcel() {
  checkWritten(rpc_port_parcel_create(&_handle));
}

Parcel Parcel::receive(rpc_port_h port) {
  rpc_port_parcel_h handle = nullptr;
  const int result = rpc_port_parcel_create_from_port(&handle, port);
  if (result != RPC_PORT_ERROR_NONE) {
    throw Error(Failure::Disconnected, "the connection ended, or carried no message");
  }
  return Parcel(handle);
}

Parcel::Parcel(Parcel &&other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}

Parcel::~Parcel() {
  if (_handle != nullptr) {
    rpc_port_parcel_destroy(_handle);
  }
}

Parcel &Parcel::writeInt(int value) {
  checkWritten(rpc_port_parcel_write_int32(_handle, value));
  return *this;
}

Parcel &Parcel::write(const Delegate &delegate) {
  writeInt(delegate.id);
  writeInt(delegate.seqId);
  checkWritten(rpc_port_parcel_write_bool(_handle, delegate.once));
  return *this;
}

Parcel &Parcel::write(bundle *content) {
  checkWritten(rpc_port_parcel_write_bundle(_handle, content));
  return *this;
}

void Parcel::send(rpc_port_h port) {
  if (rpc_port_parcel_send(_handle, port) != RPC_PORT_ERROR_NONE) {
    throw Error(Failure::Disconnected, "the connection does not take messages any more");
  }
}

int Parcel::readInt(const char *field) {
  int value = 0;
  require(rpc_port_parcel_read_int32(_handle, &value), field);
  return value;
}

bool Parcel::readBool(const char *field) {
  bool value = false;
  require(rpc_port_parcel_read_bool(_handle, &value), field);
  return value;
}

Delegate Parcel::readDelegate() {
  Delegate delegate;
  delegate.id = readInt("delegate id");
  delegate.seqId = readInt("delegate sequence id");
  delegate.once = readBool("delegate once flag");
  return delegate;
}

std::string Parcel::readString(const char *field) {
  char *raw = nullptr;
  require(rpc_port_parcel_read_string(_handle, &raw), field);
  const std::unique_ptr<char, decltype(&std::free)> text(raw, &std::free);
  return text ? std::string(text.get()) : std::string();
}

BundlePtr Parcel::readBundle(const char *field) {
  bundle *raw = nullptr;
  require(rpc_port_parcel_read_bundle(_handle, &raw), field);
  return BundlePtr(raw);
}

} // namespace norix::assistant
