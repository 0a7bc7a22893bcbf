// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_CPUTIME_H
#define NORIX_BENCHMARKS_HARNESS_CPUTIME_H

#include <sys/types.h>
#include <vector>

namespace benchmarks {

/**
 * @brief How long this process and the processes that it has started have run on a CPU.
 * @details On one CPU, of which those who wait for each other leave nothing idle, this is the time
 *          of an exchange without what other programs on a busy machine take in between.
 */
class CpuTime {
public:
  /** @brief Finds the processes that have been started so far. */
  CpuTime();
  /** @brief In nanoseconds, of all threads, in the kernel and outside. */
  double now() const;

private:
  std::vector<clockid_t> _clocks;
};

} // namespace benchmarks

#endif
