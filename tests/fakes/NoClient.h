// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_NO_CLIENT_H
#define NORIX_FAKES_NO_CLIENT_H

namespace fake {

/// Makes the library see no client for the length of a block. A std::string always has a buffer, so
/// that no call of the library leads to this state: NorixCommonData::hasClient is wrapped by the
/// linker.
class NoClient {
public:
  NoClient();
  ~NoClient();
  NoClient(const NoClient &) = delete;
  NoClient &operator=(const NoClient &) = delete;
};

} // namespace fake

#endif
