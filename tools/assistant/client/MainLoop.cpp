// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/MainLoop.h"

#include "ecore/init.h"

#include <csignal>
#include <stdexcept>

namespace norix::assistant {

MainLoop::MainLoop() {
  struct sigaction before = {};
  sigaction(SIGCHLD, nullptr, &before);
  if (!platform::ecore::initialize()) {
    throw std::runtime_error("the main loop (Ecore) does not start");
  }
  sigaction(SIGCHLD, &before, nullptr);
}

MainLoop::~MainLoop() {
  platform::ecore::shutdown();
}

} // namespace norix::assistant
