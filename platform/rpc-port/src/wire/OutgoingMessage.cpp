// SPDX-License-Identifier: Apache-2.0
#include "wire/OutgoingMessage.h"

#include <algorithm>

namespace platform::rpc_port {

void OutgoingMessage::skip(std::size_t size) {
  for (std::size_t i = 0; i < _count; ++i) {
    const std::size_t step = std::min(size, _parts[i].iov_len);
    _parts[i].iov_base = static_cast<unsigned char *>(_parts[i].iov_base) + step;
    _parts[i].iov_len -= step;
    size -= step;
  }
}

} // namespace platform::rpc_port
