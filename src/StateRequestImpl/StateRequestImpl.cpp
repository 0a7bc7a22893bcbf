// SPDX-License-Identifier: Apache-2.0
#include "StateRequestImpl/StateRequestImpl.h"

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

#include <memory>
#include <new>
#include <string>
#include <utility>

namespace norix {

namespace {

using rpc_port::message::Bundle;
using rpc_port::message::stub::InvalidCallbackException;
using rpc_port::message::stub::NotConnectedSocketException;

} // namespace

StateRequestImpl *StateRequestImpl::_instance = nullptr;

StateRequestImpl *StateRequestImpl::getInstance() {
  return instanceOf<StateRequestImpl>();
}

void StateRequestImpl::_initInstance() {
  createInstance<StateRequestImpl>();
}

int StateRequestImpl::initialize() {
  return NORIX_ERROR_NONE;
}

int StateRequestImpl::deinitialize() {
  _stateRequestInfo.reset();
  return NORIX_ERROR_NONE;
}

int StateRequestImpl::setAppStateRequestCb(norix_app_state_request_cb callback, void *userData) {
  if (callback == nullptr) {
    unsetAppStateRequestCb();
  } else {
    if (_stateRequestInfo == nullptr) {
      _stateRequestInfo.reset(new (std::nothrow) StateRequestInfo);
    }
    if (_stateRequestInfo == nullptr) {
      NORIX_LOG("StateRequestInfo is null");
      return NORIX_ERROR_OUT_OF_MEMORY;
    }
    *_stateRequestInfo = {callback, userData};
  }
  // Kept: support takes this line as a sign of the call, also with a null callback.
  NORIX_LOG("App State Request cb has been set");
  return NORIX_ERROR_NONE;
}

int StateRequestImpl::unsetAppStateRequestCb() {
  _stateRequestInfo.reset();
  NORIX_LOG("App State Request Cb has been unset");
  return NORIX_ERROR_NONE;
}

void StateRequestImpl::receiveRequest(const std::string &senderAppId, const std::string &actionId) {
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  commonData->_norixClientAppId = senderAppId;

  if (_stateRequestInfo != nullptr && _stateRequestInfo->callback != nullptr) {
    _completeCheckTimer = ecore_timer_add(COMPLETE_CHECKING_TIME * COMPLETE_WAITING_MAX_COUNT,
                                          _appStateRequestCompleteCheckCb, this);
    void *const requestHandle = commonData->assignHandle(actionId);
    // The last step: inside its callback the application may unset it, or deinitialise the library.
    _stateRequestInfo->callback(requestHandle, _stateRequestInfo->userData);
    return;
  }

  NORIX_LOG("There is no app state request callback.");
  bundle *const response = createFailure(KEY_APP_STATE, "App state request callback not registered",
                                         commonData->_requestId);
  if (response == nullptr) {
    NORIX_LOG("Bundle create failed");
    return;
  }
  const int sent = sendResponse(response);
  NORIX_LOG_FORMAT("message_port_send_message status: %d", sent);
}

int StateRequestImpl::completeAppStateRequest(void *requestHandle, const std::string &appContext) {
  if (requestHandle == nullptr) {
    // Kept: support knows a null handle by this text.
    NORIX_LOG("StateRequestInfo is null");
    return NORIX_ERROR_INVALID_PARAMETER;
  }
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (!commonData->hasClient()) {
    NORIX_LOG("Norix Client is not connected");
    return NORIX_ERROR_OPERATION_FAILED;
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
    return NORIX_ERROR_NONE;
  }
  if (_completeCheckTimer == nullptr) {
    NORIX_LOG("App State result recieved after timeout, discarding");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  ecore_timer_del(_completeCheckTimer);
  _completeCheckTimer = nullptr;
  NORIX_LOG("App result:");
  // Compared again: a request may have arrived while the line above was logged.
  if (requestId != commonData->_requestId) {
    NORIX_LOG_FORMAT("Discarding response recieved for old requestId %llu", requestId);
    return NORIX_ERROR_NONE;
  }

  bundle *const response = createAnswer(KEY_APP_STATE, appContext, commonData->_requestId);
  if (response == nullptr) {
    NORIX_LOG("bundle_create is failed");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  NORIX_LOG_FORMAT("_norixClientAppId : %s", commonData->_norixClientAppId.c_str());
  NORIX_LOG("App Context:");
  NORIX_LOG_FORMAT("%s", appContext.c_str());
  const int sent = sendResponse(response);
  NORIX_LOG_FORMAT("[NorixClient <- App] send result: %d", sent);
  // Kept: the entry of the handle is not erased, so that a second answer is late and not unknown.
  return sent;
}

Eina_Bool StateRequestImpl::_appStateRequestCompleteCheckCb(void *data) try {
  auto *const self = static_cast<StateRequestImpl *>(data);
  if (self == nullptr) {
    NORIX_LOG("State Request is null");
    return ECORE_CALLBACK_CANCEL;
  }
  if (self->_completeCheckTimer == nullptr) {
    return ECORE_CALLBACK_CANCEL;
  }
  self->_completeCheckTimer = nullptr;
  NORIX_LOG("App state request execution timed out. Failed to execute action.");

  NorixCommonData *const commonData = NorixCommonData::getInstance();
  bundle *const response =
      createFailure(KEY_APP_STATE, "App state request execution timed out", commonData->_requestId);
  if (response == nullptr) {
    NORIX_LOG("bundle_create is failed");
    return ECORE_CALLBACK_CANCEL;
  }
  (void)self->sendResponse(response);
  commonData->_actionHandlerMap.erase(commonData->_actionHandlerIndex);
  return ECORE_CALLBACK_CANCEL;
} catch (...) {
  logStoppedException();
  return ECORE_CALLBACK_CANCEL;
}

int StateRequestImpl::sendResponse(bundle *response) {
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

  std::unique_ptr<bundle, decltype(&bundle_free)> owned(response, bundle_free);
  char *appIdText = nullptr;
  (void)app_get_id(&appIdText);
  if (appIdText == nullptr) {
    NORIX_LOG("App Id is null");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  std::string appId = copyAndFree(appIdText);
  NORIX_LOG_FORMAT("App Id %s", appId.c_str());

  // Inserts an empty entry for a client that has registered no delegate.
  const auto &responseCb = norixImpl->_responseCbMap[commonData->_norixClientAppId];
  if (responseCb == nullptr) {
    NORIX_LOG("response error: InvalidCallbackException");
    // Kept: without a delegate, the response is not freed.
    (void)owned.release();
    return NORIX_ERROR_OPERATION_FAILED;
  }
  try {
    responseCb->Invoke(std::move(appId), Bundle(owned.release()));
  } catch (const NotConnectedSocketException &) {
    NORIX_LOG("response error: NotConnectedSocketException");
    return NORIX_ERROR_OPERATION_FAILED;
  } catch (const InvalidCallbackException &) {
    NORIX_LOG("response error: InvalidCallbackException");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  return NORIX_ERROR_NONE;
}

void StateRequestImpl::deleteTimer() {
  ecore_timer_del(_completeCheckTimer);
  _completeCheckTimer = nullptr;
}

} // namespace norix
