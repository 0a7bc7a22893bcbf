// SPDX-License-Identifier: Apache-2.0
#include "ecore/init.h"

#include <Ecore.h>
#include <standardStreams.h>

#include <cstdlib>

namespace platform::ecore {

namespace {

// Without XDG_RUNTIME_DIR, ecore_init() makes a folder in the home folder and aborts when it
// cannot. It puts nothing there, so any value will do while it runs. The variable must be gone
// afterwards: the ports between applications are found by its true value.
class RuntimeFolderForInit {
public:
  RuntimeFolderForInit() : _isMissing(std::getenv(kVariable) == nullptr) {
    if (_isMissing) {
      setenv(kVariable, "/tmp", 0);
    }
  }
  ~RuntimeFolderForInit() {
    if (_isMissing) {
      unsetenv(kVariable);
    }
  }
  RuntimeFolderForInit(const RuntimeFolderForInit &) = delete;
  RuntimeFolderForInit &operator=(const RuntimeFolderForInit &) = delete;

private:
  static constexpr const char *kVariable = "XDG_RUNTIME_DIR";
  bool _isMissing;
};

} // namespace

bool initialize() {
  occupyStandardStreams(); // or a pipe of Ecore's is taken for standard error
  const RuntimeFolderForInit runtimeFolder;
  // These talk to the system bus, which few development machines have.
  ecore_app_no_system_modules();
  return ecore_init() > 0;
}

void shutdown() {
  ecore_shutdown();
}

} // namespace platform::ecore
