// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_FD_WATCH_H
#define PLATFORM_RPC_PORT_LOOP_FD_WATCH_H

#include "common/LinkedList.h"
#include "loop/GLibSource.h"

#include <Ecore.h>

namespace platform::rpc_port {

/**
 * @brief Has a descriptor watched by the main loop, until it is stopped or destroyed.
 * @details By Ecore's, or by a GMainLoop that the application runs instead.
 */
class FdWatch : public Linked<FdWatch> {
public:
  /// What the loop saw. A peer that has gone shows as all three together.
  struct Events {
    bool readable;
    bool writable;
    bool hungUp;
  };

  /// Who is told. It may stop or destroy the watch from inside the call.
  class Target {
  public:
    virtual void descriptorReady(Events events) = 0;

  protected:
    ~Target() = default;
  };

  explicit FdWatch(Target &target) : _target(target), _source(&FdWatch::onPolled, this) {}
  ~FdWatch() { stop(); }
  FdWatch(const FdWatch &) = delete;
  FdWatch &operator=(const FdWatch &) = delete;

  /// Watches for a hang-up and, where wanted, for input and for room to write. @return Success.
  bool start(int descriptor, bool reading, bool writing);
  /// Changes what is watched for; costs nothing when nothing changes.
  void update(bool reading, bool writing);
  /// To be called before the descriptor is closed.
  void stop();
  /// Those of the whole process.
  static void stopAll();
  bool isRunning() const { return _handler != nullptr; }

private:
  static Eina_Bool onReady(void *data, Ecore_Fd_Handler *handler);
  static void onPolled(void *data, int events);
  static Ecore_Fd_Handler_Flags toFlags(bool reading, bool writing);

  Target &_target;
  GLibSource _source;
  Ecore_Fd_Handler *_handler = nullptr;
  Ecore_Fd_Handler_Flags _flags = ECORE_FD_ERROR;
};

} // namespace platform::rpc_port

#endif
