// SPDX-License-Identifier: Apache-2.0
//
// An application that prints the stations of its life. Its first argument is "ui" or "service";
// each further one says what happens at a station, as in "create=exit": at create, control,
// terminate, or in a timer of the loop.
#include <Ecore.h>
#include <algorithm>
#include <app.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <service_app.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

int argumentCount = 0;
char **arguments = nullptr;

bool isAsked(const std::string &what) {
  return std::find(arguments + 1, arguments + argumentCount, what) != arguments + argumentCount;
}

void say(const std::string &line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

int runMain();

void exitApplication() {
  if (isAsked("ui")) {
    ui_app_exit();
  } else {
    service_app_exit();
  }
}

void act(const std::string &station) {
  if (isAsked(station + "=throw")) {
    throw std::runtime_error("thrown by " + station);
  }
  if (isAsked(station + "=exit")) {
    exitApplication();
  }
  if (isAsked(station + "=exit-in-thread")) {
    std::thread(exitApplication).join();
  }
  if (isAsked(station + "=main")) {
    say("nested main " + std::to_string(runMain()));
  }
}

Eina_Bool onTimer(void * /*data*/) {
  say("loop");
  act("timer");
  return ECORE_CALLBACK_CANCEL;
}

bool create(void * /*userData*/) {
  say("create");
  ecore_timer_add(0.0, onTimer, nullptr);
  act("create");
  return !isAsked("create=false");
}

void control(app_control_h request, void * /*userData*/) {
  say(request != nullptr ? "control" : "control without a request");
  act("control");
}

void terminate(void * /*userData*/) {
  // Ecore must still work here, for what an application takes down at its end.
  ecore_timer_del(ecore_timer_add(1.0, onTimer, nullptr));
  say("terminate");
  act("terminate");
}

void resume(void * /*userData*/) {
  say("resume");
}

void pauseApplication(void * /*userData*/) {
  say("pause");
}

int runMain() {
  if (isAsked("ui")) {
    ui_app_lifecycle_callback_s callbacks{create, terminate, pauseApplication, resume, control};
    return ui_app_main(argumentCount, arguments, &callbacks, nullptr);
  }
  service_app_lifecycle_callback_s callbacks{create, terminate, control};
  if (isAsked("only-create")) {
    callbacks = {create, nullptr, nullptr};
  }
  return service_app_main(argumentCount, arguments, &callbacks, nullptr);
}

void runAndReport() {
  try {
    say("main " + std::to_string(runMain()));
  } catch (const std::runtime_error &error) {
    say(error.what());
  }
}

} // namespace

int main(int argc, char **argv) {
  argumentCount = argc;
  arguments = argv;

  act("before");
  runAndReport();
  if (isAsked("again")) {
    runAndReport();
  }
  const char *runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
  say(std::string("XDG_RUNTIME_DIR ") + (runtimeFolder != nullptr ? runtimeFolder : "unset"));
  // How often Ecore is now initialised: once, when nothing was left over.
  say("ecore " + std::to_string(isAsked("count") ? ecore_init() : 0));
  return EXIT_SUCCESS;
}
