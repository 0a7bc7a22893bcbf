// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_CHECK_H
#define NORIX_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Ends the process as a crash does, when what has to hold for every input does not hold for this
// one. An assert() would be gone from an optimised build.
inline void check(bool holds, const char *claim) {
  if (!holds) {
    (void)std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
  }
}

} // namespace fuzz

#endif
