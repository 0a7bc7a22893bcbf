// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>

#include "control/LaunchRequest.h"
#include "copyText.h"
#include "sendLaunchRequest.h"

#include <new>

namespace {

using platform::application::copyText;

// What the platform itself keeps in a request on a device.
bool isReserved(const std::string &key) {
  return key.rfind("__AUL_", 0) == 0 || key.rfind("__APP_SVC_", 0) == 0;
}

// Runs what may throw for want of memory.
template <typename Function>
int guarded(Function function) {
  try {
    return function();
  } catch (const std::bad_alloc &) {
    return APP_CONTROL_ERROR_OUT_OF_MEMORY;
  }
}

int setText(app_control_h request, std::string app_control_s::*member, const char *text) {
  if (request == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    request->*member = text != nullptr ? text : "";
    return APP_CONTROL_ERROR_NONE;
  });
}

// A text that is not set is null, with success.
int getText(app_control_h request, std::string app_control_s::*member, char **text) {
  if (request == nullptr || text == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    const std::string &value = request->*member;
    *text = value.empty() ? nullptr : copyText(value);
    return APP_CONTROL_ERROR_NONE;
  });
}

} // namespace

int app_control_create(app_control_h *app_control) {
  if (app_control == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    *app_control = new app_control_s;
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_destroy(app_control_h app_control) {
  if (app_control == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  delete app_control;
  return APP_CONTROL_ERROR_NONE;
}

int app_control_clone(app_control_h *clone, app_control_h app_control) {
  if (clone == nullptr || app_control == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    *clone = new app_control_s(*app_control);
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_set_operation(app_control_h app_control, const char *operation) {
  return setText(app_control, &app_control_s::operation, operation);
}

int app_control_get_operation(app_control_h app_control, char **operation) {
  return getText(app_control, &app_control_s::operation, operation);
}

int app_control_set_app_id(app_control_h app_control, const char *app_id) {
  return setText(app_control, &app_control_s::appId, app_id);
}

int app_control_get_app_id(app_control_h app_control, char **app_id) {
  return getText(app_control, &app_control_s::appId, app_id);
}

int app_control_add_extra_data(app_control_h app_control, const char *key, const char *value) {
  if (app_control == nullptr || key == nullptr || *key == '\0' || value == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    if (isReserved(key)) {
      return APP_CONTROL_ERROR_KEY_REJECTED;
    }
    app_control->extraData.insert_or_assign(key, value);
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_get_extra_data(app_control_h app_control, const char *key, char **value) {
  if (app_control == nullptr || key == nullptr || *key == '\0' || value == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] {
    const auto found = app_control->extraData.find(key);
    if (found == app_control->extraData.end()) {
      return isReserved(key) ? APP_CONTROL_ERROR_KEY_REJECTED : APP_CONTROL_ERROR_KEY_NOT_FOUND;
    }
    *value = copyText(found->second);
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_get_caller(app_control_h app_control, char **id) {
  if (app_control == nullptr || id == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return app_control->stub == nullptr ? APP_CONTROL_ERROR_KEY_NOT_FOUND
                                      : getText(app_control, &app_control_s::caller, id);
}

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb callback,
                                    void *user_data) {
  if (app_control == nullptr) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded(
      [&] { return platform::application::sendLaunchRequest(*app_control, callback, user_data); });
}

int app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                        app_control_result_e result) {
  const bool isResult = result == APP_CONTROL_RESULT_SUCCEEDED
                        || result == APP_CONTROL_RESULT_FAILED
                        || result == APP_CONTROL_RESULT_CANCELED;
  if (reply == nullptr || request == nullptr || request->stub == nullptr || !isResult) {
    return APP_CONTROL_ERROR_INVALID_PARAMETER;
  }
  return guarded([&] { return platform::application::sendReply(*reply, *request, result); });
}
