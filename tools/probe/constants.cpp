// SPDX-License-Identifier: Apache-2.0
//
// The library multiplies these two when a request arrives, to get the time after which it gives up
// waiting for the answer. The dynamic linker has it read the probe's instead of its own. Tests make
// the time shorter with $NORIX_PROBE_COMPLETION_TIMEOUT, in seconds.
#include <cstdlib>

#define NORIX_PROBE_VARIABLE __attribute__((visibility("default")))

extern "C" {
// Without norix.h, which declares them as constants.
NORIX_PROBE_VARIABLE double COMPLETE_CHECKING_TIME = 0.1;
NORIX_PROBE_VARIABLE double COMPLETE_WAITING_MAX_COUNT = 300.0;
}

namespace {

__attribute__((constructor)) void readCompletionTimeout() {
  const char *const text = std::getenv("NORIX_PROBE_COMPLETION_TIMEOUT");
  const double seconds = text != nullptr ? std::strtod(text, nullptr) : 0.0;
  if (seconds > 0.0) {
    COMPLETE_WAITING_MAX_COUNT = seconds / COMPLETE_CHECKING_TIME;
  }
}

} // namespace
