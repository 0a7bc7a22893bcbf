// SPDX-License-Identifier: Apache-2.0
#include "message/Bundle.h"

#include <utility>

namespace rpc_port::message {

Bundle::Bundle(bundle *handle) noexcept : _handle(handle) {}

Bundle::Bundle(Bundle &&other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}

Bundle &Bundle::operator=(Bundle &&other) noexcept {
  std::swap(_handle, other._handle);
  return *this;
}

Bundle::~Bundle() {
  if (_handle != nullptr) {
    bundle_free(_handle);
  }
}

bundle *Bundle::GetHandle() const {
  return _handle;
}

} // namespace rpc_port::message
