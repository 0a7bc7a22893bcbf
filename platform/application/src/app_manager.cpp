// SPDX-License-Identifier: Apache-2.0
#include <app_manager.h>

#include "launcher/RunningMark.h"

#include <new>

int app_manager_is_running(const char *app_id, bool *running) {
  if (app_id == nullptr || running == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  try {
    *running = platform::application::RunningMark::isHeld(app_id);
    return APP_MANAGER_ERROR_NONE;
  } catch (const std::bad_alloc &) {
    return APP_MANAGER_ERROR_OUT_OF_MEMORY;
  }
}
