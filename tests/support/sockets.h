// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_SOCKETS_H
#define NORIX_TESTS_SUPPORT_SOCKETS_H

#include "support/FileDescriptor.h"

#include <cstddef>
#include <string>

namespace support {

/// A Unix stream socket connected to the path; closed when that fails, with errno set. `flags` are
/// further socket types such as SOCK_NONBLOCK.
FileDescriptor connectTo(const std::string &path, int flags = 0);

/// A Unix stream socket that listens at the path; closed when that fails, with errno set.
FileDescriptor listenAt(const std::string &path, int flags = 0);

/// Sends everything, and waits while the peer's buffer is full. @return false: the peer is gone.
bool sendAll(int socket, const char *bytes, std::size_t size);

/// Receives exactly so many bytes. @return false: the peer is gone.
bool receiveAll(int socket, char *bytes, std::size_t size);

} // namespace support

#endif
