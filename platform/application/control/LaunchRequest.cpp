// SPDX-License-Identifier: Apache-2.0
#include "control/LaunchRequest.h"

#include <cstdlib>
#include <memory>

namespace platform::application {

namespace {

// A request has a few entries. What is larger comes from no application.
constexpr int kMaxEntries = 4096;

bool writeText(rpc_port_parcel_h parcel, const std::string &text) {
  return rpc_port_parcel_write_string(parcel, text.c_str()) == RPC_PORT_ERROR_NONE;
}

bool readText(rpc_port_parcel_h parcel, std::string &text) {
  char *read = nullptr;
  if (rpc_port_parcel_read_string(parcel, &read) != RPC_PORT_ERROR_NONE || read == nullptr) {
    return false;
  }
  const std::unique_ptr<char, decltype(&std::free)> owned(read, &std::free);
  text = read;
  return true;
}

} // namespace

bool writeRequest(rpc_port_parcel_h parcel, const app_control_s &request) {
  bool isWritten =
      writeText(parcel, request.operation) && writeText(parcel, request.appId)
      && rpc_port_parcel_write_array_count(parcel, static_cast<int>(request.extraData.size()))
             == RPC_PORT_ERROR_NONE;
  for (const auto &[key, value] : request.extraData) {
    isWritten = isWritten && writeText(parcel, key) && writeText(parcel, value);
  }
  return isWritten;
}

bool readRequest(rpc_port_parcel_h parcel, app_control_s &request) {
  int count = 0;
  if (!readText(parcel, request.operation) || !readText(parcel, request.appId)
      || rpc_port_parcel_read_array_count(parcel, &count) != RPC_PORT_ERROR_NONE || count < 0
      || count > kMaxEntries) {
    return false;
  }
  for (; count > 0; --count) {
    std::string key;
    std::string value;
    if (!readText(parcel, key) || !readText(parcel, value)) {
      return false;
    }
    request.extraData.insert_or_assign(std::move(key), std::move(value));
  }
  return true;
}

OwnedParcel::OwnedParcel() {
  (void)rpc_port_parcel_create(&_handle);
}

OwnedParcel::OwnedParcel(rpc_port_h port) {
  if (rpc_port_parcel_create_from_port(&_handle, port) != RPC_PORT_ERROR_NONE) {
    _handle = nullptr;
  }
}

OwnedParcel::~OwnedParcel() {
  if (_handle != nullptr) {
    (void)rpc_port_parcel_destroy(_handle);
  }
}

} // namespace platform::application
