// SPDX-License-Identifier: Apache-2.0
//
// The exported C functions: get the object, check the arguments, forward. No logic.
#include "norix.h"

#include "NorixImpl/NorixImpl.h"
#include "common/log.h"

#include <cstring>
#include <string>

using norix::NorixImpl;

namespace {

// An answer is never refused: the assistant gets the word "null" for a null text.
std::string answerText(const char *text) {
  return text != nullptr ? text : "null";
}

} // namespace

int norix_initialize(void) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->initialize();
}

int norix_deinitialize(void) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null. Not initialized");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->deinitialize();
}

int norix_set_app_state_request_cb(norix_app_state_request_cb callback, void *user_data) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->setAppStateRequestCb(callback, user_data);
}

int norix_unset_app_state_request_cb(void) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->unsetAppStateRequestCb();
}

int norix_complete_app_state_request(void *request_handle, const char *app_state) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->completeAppStateRequest(request_handle, answerText(app_state));
}

int norix_set_action_execution_cb(const char *action_id, norix_action_execution_cb callback,
                                  void *user_data) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  // Silent, unlike a null output of norix_get_action_name.
  if (action_id == nullptr) {
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  return norixImpl->setActionExcutionCb(action_id, callback, user_data);
}

int norix_unset_action_execution_cb(const char *action_id) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  // Silent, unlike a null output of norix_get_action_name.
  if (action_id == nullptr) {
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  return norixImpl->unsetExecuteActionCb(action_id);
}

int norix_complete_action_execution(void *request_handle, const char *result) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  return norixImpl->completeActionExecution(request_handle, answerText(result));
}

int norix_get_action_name(void *request_handle, char **action_id) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  if (action_id == nullptr) {
    NORIX_LOG("action_id is null");
    return NORIX_ERROR_INVALID_PARAMETER;
  }

  const std::string actionName = norixImpl->getActionName(request_handle);
  if (actionName.empty()) {
    NORIX_LOG("BUILT_IN NORIX_ERROR_INVALID_PARAMETER");
    *action_id = nullptr;
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  *action_id = strdup(actionName.c_str());
  return NORIX_ERROR_NONE;
}
