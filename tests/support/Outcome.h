// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_OUTCOME_H
#define NORIX_TESTS_SUPPORT_OUTCOME_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/// How a process ended, and what it wrote.
struct Outcome {
  /// The exit status, or minus the number of the signal that ended it.
  int status = -1;
  std::string out;
  std::string err;
  /// Standard error again, one element per write. Only inChild() fills it in.
  std::vector<std::string> writes;
  pid_t pid = -1;
};

} // namespace support

#endif
