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

// App state requests: the application's one callback, the delivery of a request to it, the wait for
// its answer, and the response.
class StateRequestImpl {
public:
  static StateRequestImpl *getInstance();
  static void _initInstance();

  int initialize();
  // Forgets the callback. A request in progress still times out.
  int deinitialize();

  int setAppStateRequestCb(norix_app_state_request_cb callback, void *userData);
  int unsetAppStateRequestCb();

  // Hands the request to the callback, or answers at once that there is none.
  void receiveRequest(const std::string &senderAppId, const std::string &actionId);
  int completeAppStateRequest(void *requestHandle, const std::string &appContext);

  // Abandons the request in progress.
  void deleteTimer();

  static StateRequestImpl *_instance;

private:
  static Eina_Bool _appStateRequestCompleteCheckCb(void *data);

  // Takes the response over, except where its failures say otherwise.
  int sendResponse(bundle *response);

  std::unique_ptr<StateRequestInfo> _stateRequestInfo;
  Ecore_Timer *_completeCheckTimer = nullptr;
};

} // namespace norix

#endif
