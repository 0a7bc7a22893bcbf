// SPDX-License-Identifier: Apache-2.0
//
// What tests change of the constants that norix.h exports.
//
// The library multiplies the two below when a request arrives, to get the time after which it gives
// up waiting for the answer. The dynamic linker has it read the probe's instead of its own. Tests
// make the time shorter with $NORIX_PROBE_COMPLETION_TIMEOUT, in seconds.
//
// $NORIX_PROBE_ALLOW_LIST is the list of senders to read instead of the device's. Applications may
// name their own as well, and do so later: then theirs counts.
#include <cstdlib>
#include <dlfcn.h>

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

__attribute__((constructor)) void readAllowList() {
  const char *const path = std::getenv("NORIX_PROBE_ALLOW_LIST");
  if (path == nullptr) {
    return;
  }
  void *const folder = dlsym(RTLD_DEFAULT, "NORIX_PROXY_ALLOW_APPID_LIST_PATH");
  void *const name = dlsym(RTLD_DEFAULT, "NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME");
  if (folder != nullptr && name != nullptr) {
    *static_cast<const char **>(folder) = "";
    *static_cast<const char **>(name) = path;
  }
}

} // namespace
