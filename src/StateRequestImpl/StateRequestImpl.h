// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_STATEREQUESTIMPL_STATEREQUESTIMPL_H
#define NORIX_STATEREQUESTIMPL_STATEREQUESTIMPL_H

#include "norix.h"

#include <Ecore.h>
#include <bundle.h>

#include <memory>
#include <string>

namespace norix {

struct StateRequestInfo {
  norix_app_state_request_cb callback;
  void *userData;
};

/// App state requests: the one callback that the application registered, the delivery of a request
/// to it, the wait for the answer, and the response.
class StateRequestImpl {
public:
  static StateRequestImpl *getInstance();
  static void _initInstance();

  int initialize();
  /// Forgets the callback. A request in progress still times out.
  int deinitialize();

  int setAppStateRequestCb(norix_app_state_request_cb callback, void *userData);
  int unsetAppStateRequestCb();

  /// Hands the request to the callback; without one, answers with a failure at once.
  void receiveRequest(const std::string &senderAppId, const std::string &actionId);
  int completeAppStateRequest(void *requestHandle, const std::string &appContext);

  /// Cancels the timer of the request in progress, which gets no response any more.
  void deleteTimer();

  static StateRequestImpl *_instance;

private:
  static Eina_Bool _appStateRequestCompleteCheckCb(void *data);

  /// Sends the response through the client's delegate. Takes ownership of it, except on the
  /// failures that are documented to leak it.
  int sendResponse(bundle *response);

  std::unique_ptr<StateRequestInfo> _stateRequestInfo;
  Ecore_Timer *_completeCheckTimer = nullptr;
};

} // namespace norix

#endif
