// SPDX-License-Identifier: Apache-2.0
#include "wire/Inbox.h"

#include <algorithm>
#include <cstring>

namespace platform::rpc_port {

bool Inbox::readRaw(unsigned char *bytes, std::size_t size) {
  if (!hasRaw(size)) {
    return false;
  }
  while (size > 0) {
    const Buffer &payload = front().payload;
    const std::size_t part = std::min(size, payload.size() - _rawOffset);
    std::memcpy(bytes, payload.data() + _rawOffset, part);
    bytes += part;
    size -= part;
    _rawOffset += part;
    if (_rawOffset == payload.size()) {
      (void)pop();
    }
  }
  return true;
}

bool Inbox::hasRaw(std::size_t size) const {
  std::size_t found = 0;
  for (std::size_t i = _first; i < _frames.size() && found < size; ++i) {
    if (_frames[i].kind != FrameKind::Raw) {
      return false;
    }
    found += _frames[i].payload.size() - (i == _first ? _rawOffset : 0);
  }
  return found >= size;
}

void Inbox::clear() {
  while (!empty()) {
    (void)pop();
  }
}

} // namespace platform::rpc_port
