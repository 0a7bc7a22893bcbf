// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_PROGRAM_H
#define NORIX_BENCHMARKS_HARNESS_PROGRAM_H

namespace benchmarks {

/** @brief Runs a program's body; what it throws becomes a message and a failed exit status. */
int runProgram(const char *name, int (*body)(int argc, char **argv), int argc, char **argv);

} // namespace benchmarks

#endif
