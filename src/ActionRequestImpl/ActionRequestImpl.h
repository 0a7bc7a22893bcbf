// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ACTIONREQUESTIMPL_ACTIONREQUESTIMPL_H
#define NORIX_ACTIONREQUESTIMPL_ACTIONREQUESTIMPL_H

#include "norix.h"

#include <Ecore.h>
#include <bundle.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace norix {

struct ActionExecutionInfo {
  norix_action_execution_cb callback;
  void *userData;
};

// Action requests: the application's callback of each action id, the delivery of a request to it,
// the wait for its answer, and the response.
class ActionRequestImpl {
public:
  static ActionRequestImpl *getInstance();
  static void _initInstance();

  int setActionExecutionCb(const std::string &actionId, norix_action_execution_cb callback,
                           void *userData);
  int unsetExecuteActionCb(const std::string &actionId);

  // Hands the request to its callback, or parks a copy for a moment: an application that has just
  // been launched may be about to register. The request stays the caller's.
  void receiveRequest(const std::string &clientAppId, const std::string &actionId, bundle *request);
  int completeActionExecution(void *requestHandle, const std::string &result);

  // Abandons the request in progress.
  void deleteTimer();
  int deinitialize();

  static ActionRequestImpl *_instance;

private:
  static void _bundleDataCb(const char *key, int type, const bundle_keyval_t *keyval,
                            void *userData);
  static Eina_Bool _actionExecutionFireCb(void *data);
  static Eina_Bool _completeActionExecutionCheckCb(void *data);

  void startCompleteCheckTimer();
  // Takes the response over, except where its failures say otherwise.
  int sendResponse(bundle *response);

  int _retryCount = 0;
  Ecore_Timer *_completeCheckTimer = nullptr;
  Ecore_Timer *_actionExecutionFireTimer = nullptr;
  // The parked request.
  bundle *_pendingBundle = nullptr;
  // Ordered byte by byte; std::less<> lets a C text be looked up without a copy.
  std::map<std::string, std::unique_ptr<ActionExecutionInfo>, std::less<>> _actionExecutionInfoMap;
};

} // namespace norix

#endif
