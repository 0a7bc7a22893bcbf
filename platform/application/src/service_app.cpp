// SPDX-License-Identifier: Apache-2.0
#include <service_app.h>

#include "lifeCycle.h"

namespace {

platform::application::LifeCycle lifeCycle(const service_app_lifecycle_callback_s &callbacks,
                                           void *userData) {
  return {[callbacks, userData] { return callbacks.create(userData); },
          [callbacks, userData](app_control_h launchRequest) {
            if (callbacks.app_control != nullptr) {
              callbacks.app_control(launchRequest, userData);
            }
          },
          [] {},
          [callbacks, userData] {
            if (callbacks.terminate != nullptr) {
              callbacks.terminate(userData);
            }
          }};
}

} // namespace

int service_app_main(int argc, char **argv, service_app_lifecycle_callback_s *callback,
                     void *user_data) {
  if (argc <= 0 || argv == nullptr || callback == nullptr || callback->create == nullptr) {
    return APP_ERROR_INVALID_PARAMETER;
  }
  return platform::application::runLifeCycle(lifeCycle(*callback, user_data));
}

void service_app_exit(void) {
  platform::application::endLifeCycle();
}
