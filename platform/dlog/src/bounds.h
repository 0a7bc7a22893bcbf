// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_BOUNDS_H
#define PLATFORM_DLOG_BOUNDS_H

#include <climits>
#include <cstddef>

/**
 * @file bounds.h
 * @brief Every bound of the log, in one place. README.md shows them as a table.
 */
namespace platform {

/** What one call writes at most, in bytes: as much as a pipe takes without mixing two writers. */
constexpr std::size_t kMaxLine = PIPE_BUF;

/** What is shown of a tag at most, in bytes. */
constexpr int kMaxTag = 128;

/** How long a line waits for room in a non-blocking descriptor before the rest of it is dropped. */
constexpr int kPatienceMs = 100;

} // namespace platform

#endif
