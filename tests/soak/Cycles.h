// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_CYCLES_H
#define NORIX_TESTS_SOAK_CYCLES_H

#include <string>

namespace soak {

// Connects to an application, asks it once and disconnects, this many times. Afterwards both sides
// must have the descriptors, memory and files that they had after the warm-up. Returns the line of
// figures; throws what does not hold.
std::string runCycles(unsigned long cycles, const std::string &logs);

} // namespace soak

#endif
