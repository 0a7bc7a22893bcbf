// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/MainLoop.h"

#include <Ecore.h>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace norix::assistant {
namespace {

bool isWritableFolder(const char *variable) {
  const char *folder = std::getenv(variable);
  return folder != nullptr && access(folder, W_OK | X_OK) == 0;
}

// Ecore aborts the process when it is told of a home that it cannot write to and of no runtime
// folder; without a home it takes the temporary folder.
void forgetUnusableHome() {
  if (!isWritableFolder("XDG_RUNTIME_DIR") && !isWritableFolder("HOME")) {
    unsetenv("HOME");
  }
}

} // namespace

MainLoop::MainLoop() {
  forgetUnusableHome();
  // Without this, Ecore complains at length on a machine without a system bus.
  ecore_app_no_system_modules();
  if (ecore_init() == 0) {
    throw std::runtime_error("the main loop (Ecore) does not start");
  }
}

MainLoop::~MainLoop() {
  ecore_shutdown();
}

} // namespace norix::assistant
