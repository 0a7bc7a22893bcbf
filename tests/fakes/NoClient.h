// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_NO_CLIENT_H
#define NORIX_FAKES_NO_CLIENT_H

namespace fake {

// For its block, the library finds that there is no client. Every std::string has a buffer, so that
// no use of one leads there: the linker sends the library's question here (--wrap).
class NoClient {
public:
  NoClient();
  ~NoClient();
  NoClient(const NoClient &) = delete;
  NoClient &operator=(const NoClient &) = delete;
};

} // namespace fake

#endif
