// SPDX-License-Identifier: Apache-2.0
#include "harness/Machine.h"

#include <cerrno>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <system_error>

namespace benchmarks {

namespace {

int lastCpu() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  sched_getaffinity(0, sizeof allowed, &allowed);
  int last = 0;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &allowed)) {
      last = cpu;
    }
  }
  return last;
}

} // namespace

void pinTo(int cpu) {
  const int wanted = cpu < 0 ? lastCpu() : cpu;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(wanted, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) {
    throw std::system_error(errno, std::generic_category(), "CPU " + std::to_string(wanted));
  }
}

void openManyFiles() {
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace benchmarks
