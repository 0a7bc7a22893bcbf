// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_CYCLES_H
#define NORIX_TESTS_SOAK_CYCLES_H

#include <string>

namespace soak {

// Connects to an application, has it answer, and disconnects, so many times. Both sides have to be
// afterwards what they were after the first of the cycles. Returns the line with the figures, and
// throws what does not hold.
std::string runCycles(unsigned long cycles, const std::string &logs);

} // namespace soak

#endif
