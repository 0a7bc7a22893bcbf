// SPDX-License-Identifier: Apache-2.0
#include <app.h>

#include "lifeCycle.h"

#include <utility>

namespace {

void call(void (*callback)(void *), void *userData) {
  if (callback != nullptr) {
    callback(userData);
  }
}

// There is no window here that could be covered: the application is visible from its launch until
// its loop has ended.
platform::application::LifeCycle lifeCycle(const ui_app_lifecycle_callback_s &callbacks,
                                           void *userData) {
  return {[callbacks, userData] { return callbacks.create(userData); },
          [callbacks, userData, isShown = false](app_control_h launchRequest) mutable {
            if (callbacks.app_control != nullptr) {
              callbacks.app_control(launchRequest, userData);
            }
            if (!std::exchange(isShown, true)) {
              call(callbacks.resume, userData);
            }
          },
          [callbacks, userData] { call(callbacks.pause, userData); },
          [callbacks, userData] { call(callbacks.terminate, userData); }};
}

} // namespace

int ui_app_main(int argc, char **argv, ui_app_lifecycle_callback_s *callback, void *user_data) {
  if (argc <= 0 || argv == nullptr || callback == nullptr || callback->create == nullptr) {
    return APP_ERROR_INVALID_PARAMETER;
  }
  return platform::application::runLifeCycle(lifeCycle(*callback, user_data));
}

void ui_app_exit(void) {
  platform::application::endLifeCycle();
}
