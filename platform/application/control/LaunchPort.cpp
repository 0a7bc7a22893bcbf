// SPDX-License-Identifier: Apache-2.0
#include "control/LaunchPort.h"

#include <dlog.h>
#include <utility>

namespace platform::application {

namespace {

constexpr const char *kTag = "CAPI_APPFW_APPLICATION";

} // namespace

LaunchPort::LaunchPort(const std::string &appId, bool isLaunched) {
  const bool isFirst = isLaunched || !RunningMark::isHeld(appId);
  if (_mark.share(appId) != RunningMark::Taken::Yes || !isFirst) {
    return;
  }
  const bool isListening =
      rpc_port_stub_create(&_stub, kLaunchPort) == RPC_PORT_ERROR_NONE
      && rpc_port_stub_add_received_event_cb(_stub, onReceived, this) == RPC_PORT_ERROR_NONE
      && rpc_port_stub_listen(_stub) == RPC_PORT_ERROR_NONE;
  if (!isListening) {
    dlog_print(DLOG_ERROR, kTag, "%s gets no launch requests while it runs", appId.c_str());
  }
}

LaunchPort::~LaunchPort() {
  if (_stub != nullptr) {
    (void)rpc_port_stub_destroy(_stub);
  }
}

void LaunchPort::deliverTo(Receiver receiver) {
  _receiver = std::move(receiver);
  while (!_waiting.empty()) {
    app_control_s request = std::move(_waiting.front());
    _waiting.pop_front();
    _receiver(&request);
  }
}

int LaunchPort::onReceived(const char *sender, const char *instance, rpc_port_h port, void *data) {
  auto *self = static_cast<LaunchPort *>(data);
  app_control_s request;
  const OwnedParcel parcel(port);
  if (parcel.get() == nullptr || !readRequest(parcel.get(), request)) {
    dlog_print(DLOG_ERROR, kTag, "%s sends what is no launch request: it is disconnected", sender);
    return -1;
  }
  request.caller = sender;
  request.stub = self->_stub;
  request.instance = instance;
  self->take(std::move(request));
  return 0;
}

void LaunchPort::take(app_control_s request) {
  if (_receiver) {
    _receiver(&request);
  } else {
    _waiting.push_back(std::move(request));
  }
}

} // namespace platform::application
