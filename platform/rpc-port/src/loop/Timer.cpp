// SPDX-License-Identifier: Apache-2.0
#include "Timer.h"

#include <utility>

namespace platform::rpc {

void Timer::start(double seconds) {
  stop();
  _timer = ecore_timer_add(seconds, &Timer::onExpired, this);
}

void Timer::stop() {
  if (_timer) {
    ecore_timer_del(std::exchange(_timer, nullptr));
  }
}

Eina_Bool Timer::onExpired(void *data) {
  auto *timer = static_cast<Timer *>(data);
  timer->_timer = nullptr;
  timer->_function(timer->_data);
  return ECORE_CALLBACK_CANCEL;
}

} // namespace platform::rpc
