// SPDX-License-Identifier: Apache-2.0
#include "loop/Timer.h"

namespace platform::rpc_port {

namespace {

LinkedList<Timer> running;

} // namespace

void Timer::start(double seconds) {
  stop();
  _timer = ecore_timer_add(seconds, &Timer::onExpired, this);
  if (_timer != nullptr) {
    running.add(*this);
    _source.delay(seconds);
  }
}

void Timer::stop() {
  if (_timer != nullptr) {
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
  static_cast<Timer *>(data)->expire();
  return ECORE_CALLBACK_CANCEL;
}

/// Returning ends Ecore's timer.
void Timer::expire() {
  _timer = nullptr;
  running.remove(*this);
  _source.stop();
  _call();
}

void Timer::onDelayed(int /*events*/) {
  stop();
  _call();
}

} // namespace platform::rpc_port
