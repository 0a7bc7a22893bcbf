// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_CHECK_H
#define NORIX_TESTS_SOAK_CHECK_H

#include "soak/Footprint.h"
#include "support/Process.h"

#include <chrono>
#include <sstream>
#include <stdexcept>
#include <string>

namespace soak {

// What must hold. Throws what does not.
inline void require(bool holds, const std::string &what) {
  if (!holds) {
    throw std::runtime_error("not as it must be: " + what);
  }
}

template <typename Value>
void require(bool holds, const std::string &what, Value before, Value after) {
  std::ostringstream text;
  text << what << ": " << before << " before, " << after << " after";
  require(holds, text.str());
}

// "descriptors 12 -> 12, memory +0.1 MiB"
std::string describe(const Footprint &before, const Footprint &after);

// The environment of an example: its log keeps warnings only, not the lines of every request.
support::Process::Environment applicationEnvironment(const std::string &appId,
                                                     const std::string &logs);

// Asks an example for its state until it answers; it may just have been started. Needs a MainLoop.
void awaitAnswer(const std::string &appId);

// Waits until the number of the process's descriptors has not changed for this long, and measures
// it.
Footprint awaitRest(pid_t process, std::chrono::milliseconds unchanged);

} // namespace soak

#endif
