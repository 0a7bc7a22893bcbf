// SPDX-License-Identifier: Apache-2.0
#include "requests/Clock.h"

namespace fuzz {

Clock &Clock::instance() {
  static auto *const one = new Clock;
  return *one;
}

void Clock::advance(double seconds) {
  const double until = _now + seconds;
  for (auto timer = nextDue(until); timer != _timers.end(); timer = nextDue(until)) {
    Ecore_Timer *const handle = timer->first;
    _now = timer->second.due;
    timer->second.due += timer->second.interval;
    // The callback may add and remove timers, this one included.
    if (timer->second.callback(const_cast<void *>(timer->second.data)) == ECORE_CALLBACK_CANCEL) {
      _timers.erase(handle);
    }
  }
  _now = until;
}

Ecore_Timer *Clock::add(double interval, Ecore_Task_Cb callback, const void *data) {
  auto *const handle = reinterpret_cast<Ecore_Timer *>(++_made);
  _timers[handle] = {interval, _now + interval, callback, data};
  return handle;
}

Clock::Timers::iterator Clock::nextDue(double until) {
  auto next = _timers.end();
  for (auto timer = _timers.begin(); timer != _timers.end(); ++timer) {
    const bool isSooner = next == _timers.end() || timer->second.due < next->second.due;
    if (timer->second.due <= until && isSooner) {
      next = timer;
    }
  }
  return next;
}

} // namespace fuzz

// In the program itself: these come before Ecore's.
extern "C" {

Ecore_Timer *ecore_timer_add(double in, Ecore_Task_Cb func, const void *data) {
  return fuzz::Clock::instance().add(in, func, data);
}

void *ecore_timer_del(Ecore_Timer *timer) {
  fuzz::Clock::instance().remove(timer);
  return nullptr;
}
}
