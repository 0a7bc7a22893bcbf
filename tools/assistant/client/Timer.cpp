// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Timer.h"

#include <new>
#include <utility>

namespace norix::assistant {

Timer::Timer(double seconds, std::function<void()> expired)
    : _expired(std::move(expired)), _handle(ecore_timer_add(seconds, onExpired, this)) {
  if (_handle == nullptr) {
    throw std::bad_alloc();
  }
}

Timer::~Timer() {
  // A timer that has ended is no timer any more: deleting it is an error in Ecore.
  if (_handle != nullptr) {
    ecore_timer_del(_handle);
  }
}

Eina_Bool Timer::onExpired(void *data) {
  auto *timer = static_cast<Timer *>(data);
  timer->_handle = nullptr;
  timer->_expired();
  return ECORE_CALLBACK_CANCEL;
}

} // namespace norix::assistant
