// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_TRANSFER_H
#define NORIX_BENCHMARKS_HARNESS_TRANSFER_H

#include <cstddef>

namespace benchmarks {

/** @brief Sends all of it, waiting where the socket makes it wait. @return false: peer gone. */
bool sendAll(int socket, const char *bytes, std::size_t size);

/** @brief Receives exactly so many bytes. @return false: the peer is gone. */
bool receiveAll(int socket, char *bytes, std::size_t size);

} // namespace benchmarks

#endif
