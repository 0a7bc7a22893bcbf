// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_CONTROL_LAUNCH_REQUEST_H
#define PLATFORM_APPLICATION_CONTROL_LAUNCH_REQUEST_H

#include <app_control.h>
#include <map>
#include <rpc-port-parcel.h>
#include <rpc-port.h>
#include <string>

/// A launch request, or a reply to one: what an app_control_h stands for.
struct app_control_s {
  std::string operation;
  std::string appId;
  std::map<std::string, std::string> extraData;

  // Of a request that has arrived.
  std::string caller;
  rpc_port_stub_h stub = nullptr; ///< Where its reply leaves; null for any other handle.
  std::string instance;
};

namespace platform::application {

/// The port on which the main functions take launch requests.
constexpr const char *kLaunchPort = "app-control";

/// Writes what travels of it. @return Success.
bool writeRequest(rpc_port_parcel_h parcel, const app_control_s &request);

/// Reads what writeRequest() wrote. @return false for anything else.
bool readRequest(rpc_port_parcel_h parcel, app_control_s &request);

/// A parcel that goes with its scope; null where there is none.
class OwnedParcel {
public:
  /// An empty one.
  OwnedParcel();
  /// The next one of a port.
  explicit OwnedParcel(rpc_port_h port);
  ~OwnedParcel();
  OwnedParcel(const OwnedParcel &) = delete;
  OwnedParcel &operator=(const OwnedParcel &) = delete;

  rpc_port_parcel_h get() const { return _handle; }

private:
  rpc_port_parcel_h _handle = nullptr;
};

} // namespace platform::application

#endif
