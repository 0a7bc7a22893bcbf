// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_CLOCK_H
#define NORIX_FUZZ_CLOCK_H

#include <Ecore.h>

#include <cstdint>
#include <map>

namespace fuzz {

// Ecore's timers, in a time that passes when the script says so.
class Clock {
public:
  // The one that the C functions serve.
  static Clock &instance();

  void advance(double seconds);
  // All timers end, unfired.
  void stop() { _timers.clear(); }

  Ecore_Timer *add(double interval, Ecore_Task_Cb callback, const void *data);
  // As Ecore does, this takes a timer that has ended.
  void remove(Ecore_Timer *handle) { _timers.erase(handle); }

private:
  struct Timer {
    double interval;
    double due;
    Ecore_Task_Cb callback;
    const void *data;
  };
  using Timers = std::map<Ecore_Timer *, Timer>;

  Timers::iterator nextDue(double until);

  Timers _timers;
  double _now = 0;
  std::uintptr_t _made = 0; // A handle is a number, and no handle comes twice.
};

} // namespace fuzz

#endif
