// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_ENVIRONMENT_H
#define NORIX_FUZZ_ENVIRONMENT_H

#include <string>

namespace fuzz {

// The application that this process is.
inline constexpr const char *kAppId = "org.example.fuzzed";

// A folder of this process's own, only for its user: the run-time directory of the ports, and the
// place for files. It goes with the process.
const std::string &folder();

} // namespace fuzz

#endif
