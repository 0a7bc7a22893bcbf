// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_TIMER_H
#define PLATFORM_RPC_PORT_LOOP_TIMER_H

#include "common/LinkedList.h"
#include "loop/GLibSource.h"

#include <Ecore.h>

namespace platform::rpc_port {

/**
 * @brief Something to do once, some time from now.
 * @details Never calls an application's handler: Ecore goes on for ever with a timer that a C++
 *          exception has passed through. What has to be raised is raised from a Job.
 */
class Timer : public Linked<Timer> {
public:
  /// What is called. It may destroy the timer from inside the call.
  using Function = void (*)(void *data);

  Timer(Function function, void *data)
      : _function(function), _data(data), _source(&Timer::onDelayed, this) {}
  ~Timer() { stop(); }
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;

  void start(double seconds);
  void stop();
  /// Those of the whole process.
  static void stopAll();
  bool isRunning() const { return _timer != nullptr; }

private:
  static Eina_Bool onExpired(void *data);
  static void onDelayed(void *data, int events);

  Function _function;
  void *_data;
  GLibSource _source;
  Ecore_Timer *_timer = nullptr;
};

} // namespace platform::rpc_port

#endif
