// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/MainLoop.h"

#include "ecore/init.h"

#include <stdexcept>

namespace norix::assistant {

MainLoop::MainLoop() {
  if (!platform::ecore::initialize()) {
    throw std::runtime_error("the main loop (Ecore) does not start");
  }
}

MainLoop::~MainLoop() {
  platform::ecore::shutdown();
}

} // namespace norix::assistant
