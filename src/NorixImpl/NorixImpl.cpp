// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/NorixImpl.h"

#include "ActionRequestImpl/ActionRequestImpl.h"
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/messageService.h"
#include "StateRequestImpl/StateRequestImpl.h"
#include "common/log.h"
#include "common/singleton.h"
#include "common/text.h"
#include "message/Exception.h"

#include <app_common.h>
#include <app_manager.h>

#include <cstring>
#include <new>
#include <utility>

namespace norix {

namespace {

constexpr int kSupported = 1;
constexpr int kNotSupported = 0;
// Versions of this series speak another protocol.
constexpr const char *kUnsupportedVersion = "1.0-alpha";

struct RequestEntries {
  // Borrowed from the request; null when it has none.
  const char *actionId;
  unsigned long long requestId;
};

RequestEntries readEntries(bundle *request) {
  char *actionId = nullptr;
  char *actionType = nullptr;
  char *actionParams = nullptr;
  void *requestId = nullptr;
  bundle_get_str(request, ACTION_ID, &actionId);
  bundle_get_str(request, ACTION_TYPE, &actionType);
  bundle_get_str(request, ACTION_PARAMS, &actionParams);
  bundle_get_byte(request, REQUEST_ID, &requestId, nullptr);

  RequestEntries entries = {actionId, 0};
  if (requestId != nullptr) {
    // Its size is not asked for: the assistant always sends eight bytes.
    std::memcpy(&entries.requestId, requestId, sizeof entries.requestId);
  }
  return entries;
}

} // namespace

NorixImpl *NorixImpl::_instance = nullptr;

NorixImpl *NorixImpl::getInstance() {
  return instanceOf<NorixImpl>();
}

void NorixImpl::_initInstance() {
  createInstance<NorixImpl>();
}

NorixImpl::NorixImpl() {
  char *appId = nullptr;
  // The result is not needed: on failure there is no id.
  (void)app_get_id(&appId);
  const OwnedText owned(appId);
  _sdkVersionSupported = getAppSdkVersion(textOf(appId));
}

int NorixImpl::getAppSdkVersion(std::string appId) {
  NORIX_LOG_FORMAT("AppId = %s", appId.c_str());

  // A failing query counts as supported: a problem of the platform must not make the application
  // unreachable.
  app_info_h handle = nullptr;
  const int created = app_info_create(appId.c_str(), &handle);
  if (created != APP_MANAGER_ERROR_NONE) {
    NORIX_LOG_FORMAT("app_info_create failed ERROR[%d]", created);
    return kSupported;
  }
  const std::unique_ptr<app_info_s, decltype(&app_info_destroy)> appInfo(handle, app_info_destroy);

  char *found = nullptr;
  const int iterated = app_info_foreach_metadata(handle, _norix_metadata_cb, &found);
  const OwnedText version(found);
  if (iterated != APP_MANAGER_ERROR_NONE) {
    NORIX_LOG_FORMAT("app_info_foreach_metadata failed ERROR[%d]", iterated);
    return kSupported;
  }

  NORIX_LOG_FORMAT("AppSdkVersion %s", version.get());
  if (version == nullptr) {
    return kNotSupported;
  }
  return std::strstr(version.get(), kUnsupportedVersion) == nullptr ? kSupported : kNotSupported;
}

bool NorixImpl::_norix_metadata_cb(const char *key, const char *value, void *userData) {
  NORIX_LOG_FORMAT("metadata_key[%s] metadata_value[%s]", key, value);
  if (std::strcmp(key, NORIX_SDK_VERSION_METADATA_KEY) == 0) {
    // The last entry counts. The values of earlier entries with the same key are leaked, once.
    *static_cast<char **>(userData) = strdup(value);
  }
  return true;
}

int NorixImpl::initialize() {
  if (_isInitialized) {
    NORIX_LOG("NorixImpl has been already initialized");
    return NORIX_ERROR_NONE;
  }
  if (_sdkVersionSupported != kSupported) {
    NORIX_LOG("App SDK Norix Init Failed. App SDK version doesn't support TIDL.");
    return NORIX_ERROR_NOT_SUPPORTED;
  }

  // No roll-back: after a failure below, the stub stays open and the next call creates another one.
  // Destroying it would disconnect the proxies that are connected to it.
  _stub = new (std::nothrow) rpc_port::message::stub::message();
  if (_stub == nullptr) {
    NORIX_LOG("message is failed");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  try {
    _stub->Listen(std::make_shared<messageService::Factory>());
  } catch (const rpc_port::message::stub::InvalidIOException &) {
    NORIX_LOG("Listen error: InvalidIOException");
    return NORIX_ERROR_OPERATION_FAILED;
  }

  NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (commonData == nullptr) {
    NORIX_LOG("NorixCommonData instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  if (StateRequestImpl::getInstance() == nullptr) {
    NORIX_LOG("StateRequestImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }
  if (ActionRequestImpl::getInstance() == nullptr) {
    NORIX_LOG("ActionRequestImpl instance is null");
    return NORIX_ERROR_OUT_OF_MEMORY;
  }

  _isInitialized = true;
  commonData->initialize();
  NORIX_LOG("App SDK NorixImpl is initialized");
  return NORIX_ERROR_NONE;
}

int NorixImpl::deinitialize() {
  if (!_isInitialized) {
    NORIX_LOG("NorixImpl is not initialized. Please initialize at first.");
    return NORIX_ERROR_NONE;
  }

  StateRequestImpl::getInstance()->deinitialize();
  ActionRequestImpl::getInstance()->deinitialize();
  NorixCommonData::getInstance()->deinitialize();
  getInstance()->_responseCbMap.clear();
  _isInitialized = false;
  delete _stub;
  _stub = nullptr;

  NORIX_LOG("NorixImpl is deinitialized");
  return NORIX_ERROR_NONE;
}

int NorixImpl::setAppStateRequestCb(norix_app_state_request_cb callback, void *userData) {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  const int result = StateRequestImpl::getInstance()->setAppStateRequestCb(callback, userData);
  NORIX_LOG("App State Request cb has been set");
  return result;
}

int NorixImpl::unsetAppStateRequestCb() {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  const int result = StateRequestImpl::getInstance()->unsetAppStateRequestCb();
  NORIX_LOG("App State Request Cb has been unset");
  return result;
}

int NorixImpl::completeAppStateRequest(void *requestHandle, const std::string &appState) {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  return StateRequestImpl::getInstance()->completeAppStateRequest(requestHandle, appState);
}

int NorixImpl::setActionExcutionCb(const std::string &actionId, norix_action_execution_cb callback,
                                   void *userData) {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  return ActionRequestImpl::getInstance()->setActionExecutionCb(actionId, callback, userData);
}

int NorixImpl::unsetExecuteActionCb(const std::string &actionId) {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  return ActionRequestImpl::getInstance()->unsetExecuteActionCb(actionId);
}

int NorixImpl::completeActionExecution(void *requestHandle, const std::string &result) {
  if (!_isInitialized) {
    NORIX_LOG("Norix is not initialized");
    return NORIX_ERROR_OPERATION_FAILED;
  }
  return ActionRequestImpl::getInstance()->completeActionExecution(requestHandle, result);
}

void NorixImpl::executeRequest(const char *senderAppId, bundle *request) {
  const RequestEntries entries = readEntries(request);

  // The stub listens before initialize has created these objects, so a request can arrive when one
  // of them could not be allocated.
  NorixCommonData *const commonData = NorixCommonData::getInstance();
  StateRequestImpl *const stateRequest = StateRequestImpl::getInstance();
  ActionRequestImpl *const actionRequest = ActionRequestImpl::getInstance();
  if (commonData == nullptr) {
    NORIX_LOG("NorixCommonData instance is null");
    return;
  }
  if (stateRequest == nullptr) {
    NORIX_LOG("StateRequestImpl instance is null");
    return;
  }
  if (actionRequest == nullptr) {
    NORIX_LOG("ActionRequestImpl instance is null");
    return;
  }

  commonData->_requestId = entries.requestId;
  commonData->_actionHandlerMap.erase(commonData->_actionHandlerIndex);
  stateRequest->deleteTimer();
  actionRequest->deleteTimer();

  if (entries.actionId == nullptr) {
    NORIX_LOG("actionId is null");
    return;
  }
  // The action id alone decides, not the action type.
  if (std::strcmp(entries.actionId, ACTION_GET_APP_STATE) == 0) {
    NORIX_LOG("App State request recieved");
    stateRequest->receiveRequest(textOf(senderAppId), entries.actionId);
  } else {
    NORIX_LOG("Action Execution request recieved");
    actionRequest->receiveRequest(textOf(senderAppId), entries.actionId, request);
  }
}

std::string NorixImpl::getActionName(void *requestHandle) {
  const NorixCommonData *const commonData = NorixCommonData::getInstance();
  if (commonData == nullptr) {
    NORIX_LOG("NorixCommonData instance is null");
    return textOf(nullptr);
  }
  // The handle is read only when there is an entry that it could belong to.
  if (commonData->_actionHandlerMap.empty() || requestHandle == nullptr) {
    NORIX_LOG("In getActionName, entry not found");
    return {};
  }
  const auto entry = commonData->_actionHandlerMap.find(commonData->handlerNumber(requestHandle));
  if (entry == commonData->_actionHandlerMap.end()) {
    NORIX_LOG("In getActionName, entry not found");
    return {};
  }
  const std::string &actionId = entry->second.first;
  NORIX_LOG_FORMAT("In getActionName, Requested actionId %s", actionId.c_str());
  return actionId;
}

} // namespace norix
