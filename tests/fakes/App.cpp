// SPDX-License-Identifier: Apache-2.0
#include "fakes/App.h"

#include "fakes/Platform.h"

#include <norix.h>

#include <cstring>

namespace fake {

int numberBehind(const void *handle) {
  // The handle of a late request is a text, which may be shorter than an int. A slot's number has
  // zeros only behind its first byte.
  int number = 0;
  std::memcpy(&number, handle, strnlen(static_cast<const char *>(handle), sizeof number));
  return number;
}

int App::initialises() {
  return norix_initialize();
}

int App::deinitialises() {
  return norix_deinitialize();
}

int App::registersForState() {
  return norix_set_app_state_request_cb(stateCallback, this);
}

int App::registersFor(const std::string &actionId) {
  return norix_set_action_execution_cb(actionId.c_str(), actionCallback, this);
}

int App::answersState(const char *appContext) {
  return norix_complete_app_state_request(stateRequests.back().handle, appContext);
}

int App::answersAction(const char *result) {
  return norix_complete_action_execution(actionRequests.back().handle, result);
}

void App::isReady() {
  initialises();
  platform().journal.clear();
  platform().log.clear();
}

void App::stateCallback(void *handle, void *self) {
  const OutsideLibrary outside;
  auto *app = static_cast<App *>(self);
  app->stateRequests.push_back({handle, numberBehind(handle), {}});
  if (app->onState) {
    app->onState(Request(app->stateRequests.back()));
  }
}

void App::actionCallback(void *handle, bundle *params, void *self) {
  const OutsideLibrary outside;
  auto *app = static_cast<App *>(self);
  app->actionRequests.push_back({handle, numberBehind(handle), contentsOf(params)});
  if (app->onAction) {
    app->onAction(Request(app->actionRequests.back()));
  }
}

} // namespace fake
