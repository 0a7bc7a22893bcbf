// SPDX-License-Identifier: Apache-2.0
#include "loop/Timer.h"

namespace platform::rpc_port {

namespace {

LinkedList<Timer> running;

} // namespace

void Timer::start(double seconds) {
  stop();
  _timer = ecore_timer_add(seconds, &Timer::onExpired, this);
  if (_timer) {
    running.add(*this);
    _source.delay(seconds);
  }
}

void Timer::stop() {
  if (_timer) {
    ecore_timer_del(_timer);
    _timer = nullptr;
    running.remove(*this);
    _source.stop();
  }
}

void Timer::stopAll() {
  while (Timer *timer = running.first()) {
    timer->stop();
  }
}

Eina_Bool Timer::onExpired(void *data) {
  auto *timer = static_cast<Timer *>(data);
  timer->_timer = nullptr;
  running.remove(*timer);
  timer->_source.stop();
  timer->_function(timer->_data);
  return ECORE_CALLBACK_CANCEL;
}

void Timer::onDelayed(void *data, int /*events*/) {
  auto *timer = static_cast<Timer *>(data);
  timer->stop();
  timer->_function(timer->_data);
}

} // namespace platform::rpc_port
