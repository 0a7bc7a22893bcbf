// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_NORIXIMPL_NORIXIMPL_H
#define NORIX_NORIXIMPL_NORIXIMPL_H

#include "message/message.h"
#include "norix.h"

#include <bundle.h>

#include <map>
#include <memory>
#include <string>

namespace norix {

/// The core of the library: its life cycle, the response delegates of the connected assistants, and
/// the routing of requests.
class NorixImpl {
public:
  using ResponseCB = rpc_port::message::stub::message::ResponseCB;

  static NorixImpl *getInstance();
  static void _initInstance();

  /// Asks the platform for the application's id and declared SDK version. Throws std::logic_error
  /// when there is no id.
  NorixImpl();
  ~NorixImpl() = default;
  NorixImpl(const NorixImpl &) = delete;
  NorixImpl &operator=(const NorixImpl &) = delete;

  int initialize();
  int deinitialize();

  int setAppStateRequestCb(norix_app_state_request_cb callback, void *userData);
  int unsetAppStateRequestCb();
  int completeAppStateRequest(void *requestHandle, const std::string &appState);
  /// The spelling of the name is part of the contract.
  int setActionExcutionCb(const std::string &actionId, norix_action_execution_cb callback,
                          void *userData);
  int unsetExecuteActionCb(const std::string &actionId);
  int completeActionExecution(void *requestHandle, const std::string &result);

  /// Abandons the request in progress and routes the new one. The caller keeps the ownership of the
  /// bundle.
  void executeRequest(const char *senderAppId, bundle *request);
  /// Empty when the handle names no request.
  std::string getActionName(void *requestHandle);

  static NorixImpl *_instance;

  /// Sender → the delegate that it registered for its responses.
  std::map<std::string, std::unique_ptr<ResponseCB>> _responseCbMap;

private:
  static int getAppSdkVersion(std::string appId);
  static bool _norix_metadata_cb(const char *key, const char *value, void *userData);

  bool _isInitialized = false;
  rpc_port::message::stub::message *_stub = nullptr;
  int _sdkVersionSupported;
};

} // namespace norix

#endif
