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

/// Action requests: the callback that the application registered for each action id, the delivery
/// of a request to it, the wait for the answer, and the response.
class ActionRequestImpl {
public:
  static ActionRequestImpl *getInstance();
  static void _initInstance();

  int setActionExecutionCb(const std::string &actionId, norix_action_execution_cb callback,
                           void *userData);
  int unsetExecuteActionCb(const std::string &actionId);

  /// Hands the request to the callback of its action id. Without one, keeps a copy and looks again
  /// for 0.1 seconds: an application that has just been launched may be about to register. The
  /// caller keeps the ownership of the request.
  void receiveRequest(const std::string &clientAppId, const std::string &actionId, bundle *request);
  int completeActionExecution(void *requestHandle, const std::string &result);

  /// Cancels the timers of the request in progress, which gets no response any more.
  void deleteTimer();
  int deinitialize();

  static ActionRequestImpl *_instance;

private:
  static void _bundleDataCb(const char *key, int type, const bundle_keyval_t *keyval,
                            void *userData);
  static Eina_Bool _actionExecutionFireCb(void *data);
  static Eina_Bool _completeActionExecutionCheckCb(void *data);

  void startCompleteCheckTimer();
  /// Sends the response through the client's delegate. Takes ownership of it, except on the
  /// failures that are documented to leak it.
  int sendResponse(bundle *response);

  int _retryCount = 0;
  Ecore_Timer *_completeCheckTimer = nullptr;
  Ecore_Timer *_actionExecutionFireTimer = nullptr;
  /// The copy of a request that waits for its callback.
  bundle *_pendingBundle = nullptr;
  /// Ordered byte by byte; std::less<> lets a C text be looked up without a copy.
  std::map<std::string, std::unique_ptr<ActionExecutionInfo>, std::less<>> _actionExecutionInfoMap;
};

} // namespace norix

#endif
