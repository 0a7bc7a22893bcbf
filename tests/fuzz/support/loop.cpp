// SPDX-License-Identifier: Apache-2.0
#include "support/loop.h"

#include "support/check.h"

#include <Ecore.h>

#include <cstdlib>

// Asked by the leak checker, where there is one: EFL loses sight of some of its classes.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:efl_class_new\n";
}

namespace fuzz {

void startLoop() {
  static const bool isStarted = [] {
    // An error that EFL reports is one that the platform has made.
    setenv("EINA_LOG_ABORT", "1", 1);
    setenv("EINA_LOG_ABORT_LEVEL", "1", 1);
    ecore_app_no_system_modules(); // They complain at length about a machine without a system bus.
    return ecore_init() > 0;
  }();
  check(isStarted, "Ecore starts");
}

void turnLoop(int times) {
  for (int i = 0; i < times; ++i) {
    ecore_main_loop_iterate();
  }
}

} // namespace fuzz
