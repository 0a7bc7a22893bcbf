// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_TALLY_H
#define NORIX_TESTS_SOAK_TALLY_H

#include <atomic>
#include <cstdint>
#include <string>

namespace soak {

// Counts of the assistants' work, in a file that they all map: an assistant may be killed at any
// moment, and its counts remain.
struct Tally {
  std::atomic<std::uint64_t> requests;    // Asked, and answered rightly.
  std::atomic<std::uint64_t> connections; // Made.
  std::atomic<std::uint64_t> failures;    // What must not happen.

  // Maps the file, creating it if needed, until the process ends.
  static Tally &in(const std::string &path);
};

} // namespace soak

#endif
