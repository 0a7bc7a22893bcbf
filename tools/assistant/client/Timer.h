// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_TIMER_H
#define NORIX_ASSISTANT_CLIENT_TIMER_H

#include <Ecore.h>

#include <functional>

namespace norix::assistant {

/** @brief Calls a function once, unless it is destroyed before. */
class Timer {
public:
  Timer(double seconds, std::function<void()> expired);
  ~Timer();
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;

private:
  static Eina_Bool onExpired(void *data);

  std::function<void()> _expired;
  Ecore_Timer *_handle;
};

} // namespace norix::assistant

#endif
