// SPDX-License-Identifier: Apache-2.0
//
// The application for tests: calls the library as its standard input says, and reports the results
// on its standard output, one JSON object a line in both directions. TestApplication.h is the other
// end.
#include "integration/app/CommandInput.h"
#include "integration/app/VoiceApplication.h"

#include <Ecore.h>

/// Asked by the leak checker, where there is one: EFL loses sight of some of its classes.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:efl_class_new\n";
}

int main(int argc, char **argv) {
  ecore_app_no_system_modules();
  if (ecore_init() == 0) {
    return 1;
  }

  integration::VoiceApplication application;
  if (argc > 1) {
    integration::VoiceApplication::useAllowList(argv[1]);
  }
  {
    const integration::CommandInput input(
        [&application](const nlohmann::json &command) { application.execute(command); });
    ecore_main_loop_begin();
  }
  ecore_shutdown();
  return 0;
}
