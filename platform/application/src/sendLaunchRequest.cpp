// SPDX-License-Identifier: Apache-2.0
#include "sendLaunchRequest.h"

#include "control/LaunchRequest.h"
#include "launcher/RunningMark.h"
#include "launcher/launch.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace platform::application {

namespace {

/// A sent request: a proxy to the application's launch port, kept until the reply has come.
class SentRequest {
public:
  SentRequest(app_control_s request, app_control_reply_cb callback, void *userData)
      : _request(std::move(request)), _callback(callback), _userData(userData) {}
  ~SentRequest() {
    if (_proxy != nullptr) {
      (void)rpc_port_proxy_destroy(_proxy);
    }
  }
  SentRequest(const SentRequest &) = delete;
  SentRequest &operator=(const SentRequest &) = delete;

  /// Connects and sends. @return Success.
  bool send() {
    rpc_port_h port = nullptr;
    const OwnedParcel parcel;
    return rpc_port_proxy_create(&_proxy) == RPC_PORT_ERROR_NONE
           && rpc_port_proxy_add_received_event_cb(_proxy, onReceived, this) == RPC_PORT_ERROR_NONE
           && rpc_port_proxy_add_disconnected_event_cb(_proxy, onDisconnected, this)
                  == RPC_PORT_ERROR_NONE
           && rpc_port_proxy_connect_sync(_proxy, _request.appId.c_str(), kLaunchPort)
                  == RPC_PORT_ERROR_NONE
           && rpc_port_proxy_get_port(_proxy, RPC_PORT_PORT_MAIN, &port) == RPC_PORT_ERROR_NONE
           && parcel.get() != nullptr && writeRequest(parcel.get(), _request)
           && rpc_port_parcel_send(parcel.get(), port) == RPC_PORT_ERROR_NONE;
  }

  bool awaitsReply() const { return _callback != nullptr; }

private:
  static void onReceived(const char * /*receiver*/, const char * /*port*/, void *data) {
    std::unique_ptr<SentRequest> self(static_cast<SentRequest *>(data));
    rpc_port_h port = nullptr;
    (void)rpc_port_proxy_get_port(self->_proxy, RPC_PORT_PORT_CALLBACK, &port);
    const OwnedParcel parcel(port);
    int result = APP_CONTROL_RESULT_FAILED;
    app_control_s reply;
    if (parcel.get() != nullptr) {
      (void)rpc_port_parcel_read_int32(parcel.get(), &result);
      (void)readRequest(parcel.get(), reply);
    }
    self->conclude(std::move(reply), static_cast<app_control_result_e>(result));
  }

  /// The application has ended without a reply.
  static void onDisconnected(const char * /*receiver*/, const char * /*port*/, void *data) {
    std::unique_ptr<SentRequest> self(static_cast<SentRequest *>(data));
    self->conclude({}, APP_CONTROL_RESULT_CANCELED);
  }

  void conclude(app_control_s reply, app_control_result_e result) {
    // First, because the callback may run the loop, and no other event is to find this object.
    (void)rpc_port_proxy_destroy(std::exchange(_proxy, nullptr));
    _callback(&_request, &reply, result, _userData);
  }

  app_control_s _request;
  app_control_reply_cb _callback;
  void *_userData;
  rpc_port_proxy_h _proxy = nullptr;
};

app_control_s withOperation(app_control_s request) {
  if (request.operation.empty()) {
    request.operation = APP_CONTROL_OPERATION_DEFAULT;
  }
  return request;
}

int startIfNeeded(const std::string &appId) {
  switch (launch(appId, LaunchReason::Request)) {
  case Launch::Started:
  case Launch::Running:
    return APP_CONTROL_ERROR_NONE;
  case Launch::Unknown:
    return RunningMark::isHeld(appId) ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_APP_NOT_FOUND;
  case Launch::Failed:
    break;
  }
  return APP_CONTROL_ERROR_LAUNCH_FAILED;
}

} // namespace

int sendLaunchRequest(const app_control_s &request, app_control_reply_cb callback, void *userData) {
  if (request.appId.empty()) {
    return APP_CONTROL_ERROR_APP_NOT_FOUND;
  }
  const int error = startIfNeeded(request.appId);
  if (error != APP_CONTROL_ERROR_NONE) {
    return error;
  }
  auto sent = std::make_unique<SentRequest>(withOperation(request), callback, userData);
  if (!sent->send()) {
    return APP_CONTROL_ERROR_LAUNCH_FAILED;
  }
  if (sent->awaitsReply()) {
    (void)sent.release(); // Its reply, or the application's end, deletes it.
  }
  return APP_CONTROL_ERROR_NONE;
}

int sendReply(const app_control_s &reply, const app_control_s &request,
              app_control_result_e result) {
  rpc_port_h port = nullptr;
  const OwnedParcel parcel;
  const bool isSent =
      rpc_port_stub_get_port(request.stub, RPC_PORT_PORT_CALLBACK, request.instance.c_str(), &port)
          == RPC_PORT_ERROR_NONE
      && parcel.get() != nullptr
      && rpc_port_parcel_write_int32(parcel.get(), result) == RPC_PORT_ERROR_NONE
      && writeRequest(parcel.get(), reply)
      && rpc_port_parcel_send(parcel.get(), port) == RPC_PORT_ERROR_NONE;
  return isSent ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_IO_ERROR;
}

} // namespace platform::application
