// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_BOUNDS_H
#define PLATFORM_DLOG_BOUNDS_H

#include <climits>
#include <cstddef>

/// Every limit of the log, in one place. README.md shows them as a table.
namespace platform::dlog {

/// Bytes that one call writes at most: as many as a pipe takes without mixing two writers.
constexpr std::size_t kMaxLine = PIPE_BUF;

/// Bytes of a tag that are shown at most.
constexpr int kMaxTag = 128;

/// Milliseconds that a line waits for room in a full non-blocking descriptor.
constexpr int kPatienceMs = 100;

} // namespace platform::dlog

#endif
