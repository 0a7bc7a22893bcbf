// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_CONTROL_LAUNCH_PORT_H
#define PLATFORM_APPLICATION_CONTROL_LAUNCH_PORT_H

#include "control/LaunchRequest.h"
#include "launcher/RunningMark.h"

#include <deque>
#include <functional>
#include <string>

namespace platform::application {

/**
 * @brief Where a running application takes launch requests.
 * @details The first process of an application takes them; a second one, started by hand, runs
 *          without. Requests that arrive before deliverTo() wait.
 */
class LaunchPort {
public:
  using Receiver = std::function<void(app_control_h)>;

  /// @param isLaunched  whether a launcher started this process, which is then the only one
  LaunchPort(const std::string &appId, bool isLaunched);
  ~LaunchPort();
  LaunchPort(const LaunchPort &) = delete;
  LaunchPort &operator=(const LaunchPort &) = delete;

  bool hasWaiting() const { return !_waiting.empty(); }
  /// Hands out what waits, and from now on each request from the loop.
  void deliverTo(Receiver receiver);

private:
  static int onReceived(const char *sender, const char *instance, rpc_port_h port, void *data);
  void take(app_control_s request);

  RunningMark _mark;
  rpc_port_stub_h _stub = nullptr;
  Receiver _receiver;
  std::deque<app_control_s> _waiting;
};

} // namespace platform::application

#endif
