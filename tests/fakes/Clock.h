// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_CLOCK_H
#define NORIX_FAKES_CLOCK_H

#include <Ecore.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace fake {

struct FakeTimer {
  int number;
  double interval;
  Ecore_Task_Cb callback;
  const void *data;
  int64_t due; // in nanoseconds of the fake's time
  bool alive;
};

/// The time and the timers, under the control of the test.
class Clock {
public:
  /// Lets time pass and calls the timers that come due: in the order of their times, and of their
  /// creation at the same time. A timer whose callback returns 1 is renewed. An exception of a
  /// callback passes through.
  void advance(double seconds);

  std::vector<FakeTimer> alive() const;

  /// The library's side.
  Ecore_Timer *add(double interval, Ecore_Task_Cb callback, const void *data);
  /// Null for a timer that is not alive.
  const FakeTimer *find(const Ecore_Timer *handle) const;
  /// The data of the timer, null for one that is not alive: harmless, as with Ecore.
  void *remove(const Ecore_Timer *handle);

private:
  FakeTimer *nextDue(int64_t until);

  /// Timers that ended stay in here, so that a stale handle never names a new timer.
  std::vector<std::unique_ptr<FakeTimer>> _timers;
  int64_t _now = 0;
};

} // namespace fake

#endif
