// SPDX-License-Identifier: Apache-2.0
#include "ActionRequestImpl/ActionRequestImpl.h"

#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"
#include "common/exceptions.h"
#include "common/log.h"
#include "common/response.h"
#include "common/singleton.h"
#include "common/text.h"
#include "message/Bundle.h"
#include "message/Exception.h"

#include <app_common.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace norix {

namespace {

using rpc_port::message::Bundle;
using rpc_port::message::stub::InvalidCallbackException;
using rpc_port::message::stub::NotConnectedSocketException;

constexpr double kRetryInterval = 0.02;
// The ticks on which the callback is looked up, until 0.10 s after the request; the next one gives
// up.
constexpr int kRetryMaxCount = 5;
// The only byte value of a request is its id.
constexpr std::size_t kRequestIdSize = 8;

// Calls the callback of a request that waited for it. No exception leaves this function.
void callLate(const ActionExecutionInfo &info, char *actionId, bundle *request) {
  try {
    NorixCommonData::getInstance()->noteTextHandle(actionId);
    info.callback(actionId, request, info.userData);
  } catch (...) {
    logStoppedException();
  }
}

} // namespace

ActionRequestImpl *ActionRequestImpl::_instance = nullptr;

ActionRequestImpl *ActionRequestImpl::getInstance() {
  return instanceOf<ActionRequestImpl>();
}

void ActionRequestImpl::_initInstance() {
  createInstance<ActionRequestImpl>();
}

int ActionRequestImpl::setActionExecutionCb(const std::string &actionId,
                                            norix_action_execution_cb callback, void *userData) {
  if (callback == nullptr) {
    unsetExecuteActionCb(actionId);
    // Kept: support takes this line as a sign of the call, also with a null callback.
    NORIX_LOG_FORMAT("'%s' Action Execution cb has been set", actionId.c_str());
    return NORIX_ERROR_NONE;
  }

  std::unique_ptr<ActionExecutionInfo> info(new (std::nothrow) ActionExecutionInfo);
  if (info == nullptr) {
    NORIX_LOG("actionHandlerInfo is null");
    // Kept: applications know a failed allocation here by this value, not by OUT_OF_MEMORY.
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  *info = {callback, userData};
  _actionExecutionInfoMap.erase(actionId);
  _actionExecutionInfoMap.emplace(actionId, std::move(info));
  NORIX_LOG_FORMAT("'%s' Action Execution cb has been set", actionId.c_str());
  return NORIX_ERROR_NONE;
}

int ActionRequestImpl::unsetExecuteActionCb(const std::string &actionId) {
  _actionExecutionInfoMap.erase(actionId);
  NORIX_LOG_FORMAT("'%s' Action Execution cb has been unset", actionId.c_str());
  return NORIX_ERROR_NONE;
}

void ActionRequestImpl::receiveRequest(const std::string &clientAppId, const std::string &actionId,
                                       bundle *request) {
  // Reset, not freed: deleteTimer has freed a copy that was still waiting, and the application may
  // still read one that was delivered.
  _pendingBundle = nullptr;
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  commonData->_norixClientAppId = clientAppId;

  const auto registered = _actionExecutionInfoMap.find(actionId);
  if (registered != _actionExecutionInfoMap.end()) {
    const ActionExecutionInfo *const info = registered->second.get();
    NORIX_LOG_FORMAT("Found execute action Id: %s  Callback: %p", registered->first.c_str(),
                     static_cast<const void *>(info));
    if (info == nullptr) { // GCOVR_EXCL_START: no registration is without a record.
      NORIX_LOG("ActionExecutionInfo is null");
      return;
    } // GCOVR_EXCL_STOP
    startCompleteCheckTimer();
    void *const requestHandle = commonData->assignHandle(actionId);
    // The last step: inside its callback the application may unset it, or deinitialise the library.
    info->callback(requestHandle, request, info->userData);
    return;
  }

  NORIX_LOG("There is no matching action execution callback, waiting for sometime to see if reg "
            "can happen");
  if (_actionExecutionFireTimer != nullptr) {
    return;
  }
  _pendingBundle = bundle_create();
  if (_pendingBundle == nullptr) {
    NORIX_LOG("bundle_create is failed");
    return;
  }
  bundle_foreach(request, _bundleDataCb, _pendingBundle);
  _retryCount = 0;
  _actionExecutionFireTimer = ecore_timer_add(kRetryInterval, _actionExecutionFireCb, this);
}

void ActionRequestImpl::_bundleDataCb(const char *key, int /*type*/, const bundle_keyval_t *keyval,
                                      void *userData) {
  auto *const target = static_cast<bundle *>(userData);
  if (target == nullptr) {
    NORIX_LOG("Bundle data is null");
    return;
  }
  // The platform's getters take a pointer to non-const and change nothing.
  auto *const entry = const_cast<bundle_keyval_t *>(keyval);
  if (bundle_keyval_type_is_array(entry) != 0) {
    NORIX_LOG("key value is array type");
    return;
  }

  void *value = nullptr;
  std::size_t size = 0;
  if (bundle_keyval_get_type(entry) == BUNDLE_TYPE_BYTE) {
    bundle_keyval_get_basic_val(entry, &value, &size);
    // Kept: eight bytes whatever the stored size, because byte values in requests are request ids.
    bundle_add_byte(target, key, value, kRequestIdSize);
  } else {
    bundle_keyval_get_basic_val(entry, &value, &size);
    bundle_add_str(target, key, static_cast<const char *>(value));
  }
}

// Kept: where the timer ends in one of the first checks, its field is not reset. The next request
// deletes the stale timer, which is harmless.
Eina_Bool ActionRequestImpl::_actionExecutionFireCb(void *data) {
  NORIX_LOG("_actionExecutionFireCb called");
  auto *const self = static_cast<ActionRequestImpl *>(data);
  if (self == nullptr) {
    NORIX_LOG("actionPtr is null");
    return ECORE_CALLBACK_CANCEL;
  }
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (!commonData->hasClient()) {
    NORIX_LOG("Norix Client app id is null");
    return ECORE_CALLBACK_CANCEL;
  }
  if (self->_pendingBundle == nullptr) {
    NORIX_LOG("ActionRequest bundle data is null");
    return ECORE_CALLBACK_CANCEL;
  }
  if (self->_actionExecutionFireTimer == nullptr) {
    NORIX_LOG("ActionRequest _actionExecutionFireTimer is null");
    return ECORE_CALLBACK_CANCEL;
  }

  if (++self->_retryCount > kRetryMaxCount) {
    NORIX_LOG("There is no matching action execution callback.");
    self->_actionExecutionFireTimer = nullptr;
    bundle *const response = createFailure(
        KEY_ACTION_RESULT, "Action Execution callback not registered", commonData->_requestId);
    if (response == nullptr) {
      NORIX_LOG("bundle_create is failed");
      return ECORE_CALLBACK_CANCEL;
    }
    try {
      const int sent = self->sendResponse(response);
      NORIX_LOG_FORMAT("send reponse result: %d", sent);
    } catch (...) {
      logStoppedException();
    }
    return ECORE_CALLBACK_CANCEL;
  }

  char *actionId = nullptr;
  bundle_get_str(self->_pendingBundle, ACTION_ID, &actionId);
  const auto registered = self->_actionExecutionInfoMap.find(viewOf(actionId));
  if (registered == self->_actionExecutionInfoMap.end()) {
    return ECORE_CALLBACK_RENEW;
  }
  const ActionExecutionInfo *const info = registered->second.get();
  NORIX_LOG_FORMAT("Found execute action Id: %s  Callback: %p", registered->first.c_str(),
                   static_cast<const void *>(info));
  if (info == nullptr) { // GCOVR_EXCL_START: no registration is without a record.
    NORIX_LOG("ActionExecutionInfo is null");
    return ECORE_CALLBACK_CANCEL;
  } // GCOVR_EXCL_STOP
  self->startCompleteCheckTimer();
  self->_actionExecutionFireTimer = nullptr;
  // Kept: the handle is the action id's text and not a slot, and no handler number is assigned. So
  // a request that came before its callback cannot be answered, and the assistant is told that it
  // timed out. The copy is not freed, because completing the request reads the text again.
  callLate(*info, actionId, self->_pendingBundle);
  return ECORE_CALLBACK_CANCEL;
}

void ActionRequestImpl::startCompleteCheckTimer() {
  _completeCheckTimer = ecore_timer_add(COMPLETE_CHECKING_TIME * COMPLETE_WAITING_MAX_COUNT,
                                        _completeActionExecutionCheckCb, this);
}

int ActionRequestImpl::completeActionExecution(void *requestHandle, const std::string &result) {
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (!commonData->hasClient()) {
    NORIX_LOG("Norix Client is not connected");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  if (requestHandle == nullptr) {
    NORIX_LOG("request handle is null");
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  const int number = commonData->handlerNumber(requestHandle);
  const auto entry = commonData->_actionHandlerMap.find(number);
  if (entry == commonData->_actionHandlerMap.end()) {
    NORIX_LOG_FORMAT("Couldn't find requestId corresponding to actionHandler %d", number);
    // Kept: a stale handle is no error to the application.
    return NORIX_ERROR_NONE;
  }
  const unsigned long long requestId = entry->second.second;
  if (requestId != commonData->_requestId) {
    NORIX_LOG_FORMAT("Discarding response recieved for old requestId %llu", requestId);
    commonData->_actionHandlerMap.erase(entry);
    return NORIX_ERROR_NONE;
  }
  if (_completeCheckTimer == nullptr) {
    NORIX_LOG("Action Execution result recieved after timeout, discarding");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  ecore_timer_del(_completeCheckTimer);
  _completeCheckTimer = nullptr;

  bundle *const response = createAnswer(KEY_ACTION_RESULT, result, commonData->_requestId);
  if (response == nullptr) {
    NORIX_LOG("bundle_create is failed");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  NORIX_LOG_FORMAT("_norixClientAppId : %s", commonData->_norixClientAppId.c_str());
  NORIX_LOG("Action result:");
  NORIX_LOG_FORMAT("%s", result.c_str());
  const int sent = sendResponse(response);
  // Kept: logged also when the response could not be sent.
  NORIX_LOG("Response success");
  commonData->_actionHandlerMap.erase(number);
  return sent;
}

Eina_Bool ActionRequestImpl::_completeActionExecutionCheckCb(void *data) try {
  auto *const self = static_cast<ActionRequestImpl *>(data);
  if (self == nullptr) {
    NORIX_LOG("Action Request Pointer is null");
    return ECORE_CALLBACK_CANCEL;
  }
  if (self->_completeCheckTimer == nullptr) {
    return ECORE_CALLBACK_CANCEL;
  }
  self->_completeCheckTimer = nullptr;
  NORIX_LOG("action execution timed out. Failed to execute action.");

  NorixCommonData *const commonData = NorixCommonData::getInstance();
  bundle *const response = createFailure(KEY_ACTION_RESULT, "Action execution request timed out",
                                         commonData->_requestId);
  if (response == nullptr) {
    NORIX_LOG("bundle_create is failed");
    return ECORE_CALLBACK_CANCEL;
  }
  const int sent = self->sendResponse(response);
  NORIX_LOG_FORMAT("send reponse result: %d", sent);
  commonData->_actionHandlerMap.erase(commonData->_actionHandlerIndex);
  return ECORE_CALLBACK_CANCEL;
} catch (...) {
  logStoppedException();
  return ECORE_CALLBACK_CANCEL;
}

int ActionRequestImpl::sendResponse(bundle *response) {
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  const NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (!commonData->hasClient()) {
    NORIX_LOG("Norix Client is not connected");
    return NORIX_ERROR_OPERATION_FAILED;
  }

  Bundle owned(response);
  char *appId = nullptr;
  (void)app_get_id(&appId);
  if (appId == nullptr) {
    NORIX_LOG("App Id is null");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  OwnedText ownedAppId(appId);
  NORIX_LOG_FORMAT("App Id %s", appId);

  // Inserts an empty entry for a client that has registered no delegate.
  const auto &responseCb = norixImpl->_responseCbMap[commonData->_norixClientAppId];
  if (responseCb == nullptr) {
    NORIX_LOG("response error: InvalidCallbackException");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  // Kept: when the invocation throws, the id is not freed.
  (void)ownedAppId.release();
  try {
    responseCb->Invoke(appId, std::move(owned));
  } catch (const NotConnectedSocketException &) {
    NORIX_LOG("response error: NotConnectedSocketException");
    return NORIX_ERROR_OPERATION_FAILED;
  } catch (const InvalidCallbackException &) {
    NORIX_LOG("response error: InvalidCallbackException");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  std::free(appId);
  return NORIX_ERROR_NONE;
}

void ActionRequestImpl::deleteTimer() {
  ecore_timer_del(_completeCheckTimer);
  _completeCheckTimer = nullptr;
  if (_actionExecutionFireTimer != nullptr) {
    ecore_timer_del(_actionExecutionFireTimer);
    _actionExecutionFireTimer = nullptr;
    // The pointer is not reset here: nothing reads it without the timer, and the next action
    // request resets it.
    bundle_free(_pendingBundle);
  }
}

int ActionRequestImpl::deinitialize() {
  _retryCount = 0;
  ecore_timer_del(_actionExecutionFireTimer);
  _actionExecutionFireTimer = nullptr;
  // Not freed: the application may be inside the callback that was given this request.
  _pendingBundle = nullptr;
  ecore_timer_del(_completeCheckTimer);
  _completeCheckTimer = nullptr;
  _actionExecutionInfoMap.clear();
  NorixCommonData::getInstance()->_actionHandlerMap.clear();
  return NORIX_ERROR_NONE;
}

} // namespace norix
