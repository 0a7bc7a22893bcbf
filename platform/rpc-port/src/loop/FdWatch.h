// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_FD_WATCH_H
#define PLATFORM_RPC_PORT_LOOP_FD_WATCH_H

#include "common/Callback.h"
#include "common/LinkedList.h"
#include "loop/GLibSource.h"

#include <Ecore.h>

namespace platform::rpc_port {

/// Watches a descriptor on the main loop, until it is stopped or destroyed: on Ecore's, or on a
/// GMainLoop that the application runs instead.
class FdWatch : public Linked<FdWatch> {
public:
  /// What the loop saw. A peer's close shows as all three together.
  struct Events {
    bool readable;
    bool writable;
    bool hungUp;
  };

  /// Called for each event. It may stop or destroy the watch.
  using Ready = Callback<void(Events events)>;

  explicit FdWatch(Ready ready)
      : _ready(ready), _source(GLibSource::Function::to<&FdWatch::onPolled>(*this)) {}
  ~FdWatch() { stop(); }
  FdWatch(const FdWatch &) = delete;
  FdWatch &operator=(const FdWatch &) = delete;

  /// Watches for a hang-up and, where wanted, for input and for room to write. @return Success.
  bool start(int descriptor, bool reading, bool writing);
  /// Changes what is watched for; costs nothing when nothing changes.
  void update(bool reading, bool writing);
  /// Has to be called before the descriptor is closed.
  void stop();
  /// Stops all watches of the process.
  static void stopAll();
  bool isRunning() const { return _handler != nullptr; }

private:
  static Eina_Bool onReady(void *data, Ecore_Fd_Handler *handler);
  void onPolled(int events);
  static Ecore_Fd_Handler_Flags toFlags(bool reading, bool writing);

  Ready _ready;
  GLibSource _source;
  Ecore_Fd_Handler *_handler = nullptr;
  Ecore_Fd_Handler_Flags _flags = ECORE_FD_ERROR;
};

} // namespace platform::rpc_port

#endif
