// SPDX-License-Identifier: Apache-2.0
#include "fakes/Clock.h"

#include "fakes/Platform.h"

#include <algorithm>
#include <cmath>

namespace fake {

namespace {

int64_t nanoseconds(double seconds) {
  return std::llround(seconds * 1e9);
}

} // namespace

void Clock::advance(double seconds) {
  const int64_t until = _now + nanoseconds(seconds);
  while (FakeTimer *timer = nextDue(until)) {
    _now = timer->due;
    timer->due += nanoseconds(timer->interval);
    const InsideLibrary inside;
    if (timer->callback(const_cast<void *>(timer->data)) == ECORE_CALLBACK_CANCEL) {
      timer->alive = false;
    }
  }
  _now = until;
}

FakeTimer *Clock::nextDue(int64_t until) {
  FakeTimer *next = nullptr;
  for (const auto &timer : _timers) {
    if (timer->alive && timer->due <= until && (next == nullptr || timer->due < next->due)) {
      next = timer.get();
    }
  }
  return next;
}

std::vector<FakeTimer> Clock::alive() const {
  std::vector<FakeTimer> found;
  for (const auto &timer : _timers) {
    if (timer->alive) {
      found.push_back(*timer);
    }
  }
  return found;
}

Ecore_Timer *Clock::add(double interval, Ecore_Task_Cb callback, const void *data) {
  const int number = static_cast<int>(_timers.size()) + 1;
  _timers.push_back(std::make_unique<FakeTimer>(
      FakeTimer{number, interval, callback, data, _now + nanoseconds(interval), true}));
  return reinterpret_cast<Ecore_Timer *>(_timers.back().get());
}

const FakeTimer *Clock::find(const Ecore_Timer *handle) const {
  const auto found = std::find_if(_timers.begin(), _timers.end(), [handle](const auto &timer) {
    return timer->alive && reinterpret_cast<const Ecore_Timer *>(timer.get()) == handle;
  });
  return found == _timers.end() ? nullptr : found->get();
}

void *Clock::remove(const Ecore_Timer *handle) {
  for (const auto &timer : _timers) {
    if (timer->alive && reinterpret_cast<const Ecore_Timer *>(timer.get()) == handle) {
      timer->alive = false;
      return const_cast<void *>(timer->data);
    }
  }
  return nullptr;
}

} // namespace fake

using fake::platform;
using fake::PlatformCall;

extern "C" {

Ecore_Timer *ecore_timer_add(double in, Ecore_Task_Cb func, const void *data) {
  const PlatformCall call("ecore_timer_add", in);
  return call.failure() ? nullptr : platform().clock.add(in, func, data);
}

void *ecore_timer_del(Ecore_Timer *timer) {
  const PlatformCall call("ecore_timer_del", timer);
  return platform().clock.remove(timer);
}
}
