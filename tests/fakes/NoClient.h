// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_NO_CLIENT_H
#define NORIX_FAKES_NO_CLIENT_H

#include "NorixImpl/NorixCommonData.h"

#include <array>
#include <cstring>
#include <string>

namespace fake {

// Takes the character buffer of the client's id away. No use of std::string can do that: a string
// always has a buffer. The library asks for it nevertheless, and this is the way to get there: the
// string's bytes are set to zero, and restored at the end of the block.
class NoClient {
public:
  NoClient() {
    std::memcpy(_saved.data(), clientId(), _saved.size());
    std::memset(clientId(), 0, _saved.size());
  }
  ~NoClient() { std::memcpy(clientId(), _saved.data(), _saved.size()); }
  NoClient(const NoClient &) = delete;
  NoClient &operator=(const NoClient &) = delete;

private:
  static void *clientId() { return &norix::NorixCommonData::_instance->_norixClientAppId; }

  std::array<char, sizeof(std::string)> _saved{};
};

} // namespace fake

#endif
