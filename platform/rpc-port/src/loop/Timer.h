// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_TIMER_H
#define PLATFORM_RPC_PORT_LOOP_TIMER_H

#include "common/Callback.h"
#include "common/LinkedList.h"
#include "loop/GLibSource.h"

#include <Ecore.h>

namespace platform::rpc_port {

/// A timer that fires once. It never calls an application's handler, for Ecore never ends a timer
/// that a C++ exception has passed through; events are raised from a Job.
class Timer : public Linked<Timer> {
public:
  /// @param call May destroy the timer.
  explicit Timer(Callback<void()> call)
      : _call(call), _source(GLibSource::Function::to<&Timer::onDelayed>(*this)) {}
  ~Timer() { stop(); }
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;

  void start(double seconds);
  void stop();
  /// Stops all timers of the process.
  static void stopAll();
  bool isRunning() const { return _timer != nullptr; }

private:
  static Eina_Bool onExpired(void *data);
  void expire();
  void onDelayed(int events);

  Callback<void()> _call;
  GLibSource _source;
  Ecore_Timer *_timer = nullptr;
};

} // namespace platform::rpc_port

#endif
