// SPDX-License-Identifier: Apache-2.0
#include "harness/program.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace benchmarks {

int runProgram(const char *name, int (*body)(int argc, char **argv), int argc, char **argv) {
  try {
    return body(argc, argv);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
    return EXIT_FAILURE;
  }
}

} // namespace benchmarks
