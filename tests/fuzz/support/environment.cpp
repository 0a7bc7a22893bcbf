// SPDX-License-Identifier: Apache-2.0
//
// The world of a fuzzed process, the same for every target and on every machine.
#include "support/environment.h"

#include "support/check.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fuzz {

namespace {

void removeFolder() {
  std::error_code ignored; // What cannot be removed is for /tmp's own cleaning.
  std::filesystem::remove_all(folder(), ignored);
}

} // namespace

const std::string &folder() {
  static const auto *const path = [] {
    // Short, because the path of a socket is. Never destroyed: removeFolder() needs it at the end.
    auto *made = new std::string("/tmp/norix-fuzz-XXXXXX");
    check(mkdtemp(made->data()) != nullptr, "a folder can be made in /tmp");
    return made;
  }();
  return *path;
}

} // namespace fuzz

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  // Not DLOG_FILTER: lines are to be formatted as ever, for that is where bad texts would hurt.
  setenv("DLOG_FILE", "/dev/null", 1);
  unsetenv("DLOG_FILTER");
  setenv("AUL_APPID", fuzz::kAppId, 1);
  setenv("XDG_RUNTIME_DIR", fuzz::folder().c_str(), 1);
  setenv("HOME", fuzz::folder().c_str(), 1);
  (void)std::atexit(fuzz::removeFolder);
  return 0;
}
