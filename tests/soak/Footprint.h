// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_FOOTPRINT_H
#define NORIX_TESTS_SOAK_FOOTPRINT_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace soak {

// The resources that a process holds.
struct Footprint {
  long descriptors = 0;
  long memoryKiB = 0; // Memory of its own that is in use, files and shared pages not counted.

  static Footprint of(pid_t process);
};

// The files below a folder, folders included, in order.
std::vector<std::string> filesBelow(const std::string &folder);

} // namespace soak

#endif
