// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_MACHINE_H
#define NORIX_BENCHMARKS_HARNESS_MACHINE_H

namespace benchmarks {

/** @brief Lets no CPU but this run the process and those that it starts; -1 means the last one. */
void pinTo(int cpu);

/** @brief Allows as many open files as the system grants this process. */
void openManyFiles();

} // namespace benchmarks

#endif
