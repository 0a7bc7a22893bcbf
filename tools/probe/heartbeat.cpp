// SPDX-License-Identifier: Apache-2.0
#include "probe/heartbeat.h"

#include "probe/Reporter.h"
#include "probe/callbacks.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <dlfcn.h>

namespace norix::probe {
namespace {

constexpr double kInterval = 0.1;
// A second, and the interval in which a note may be overdue without anything being wrong.
constexpr std::uint64_t kHeldTooLong = 1100000000;

// When the loop turned last; 0 while there is no heartbeat.
std::atomic<std::uint64_t> lastTurn{0};
// Which of the timers beats. The others end by themselves: Ecore may be gone when the heartbeat
// stops, so none is ever deleted.
std::uintptr_t generation = 0;

unsigned char onTimer(void *data) {
  if (reinterpret_cast<std::uintptr_t>(data) != generation) {
    return 0;
  }
  beat(now());
  return 1;
}

template <typename Function>
Function *inApplication(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

} // namespace

void startHeartbeat() {
  using AddTimer = void *(double, unsigned char (*)(void *), void *);
  using IsLoop = unsigned char();
  auto *const addTimer = inApplication<AddTimer>("ecore_timer_add");
  auto *const isLoop = inApplication<IsLoop>("eina_main_loop_is");
  if (!isReporting() || addTimer == nullptr || isLoop == nullptr || isLoop() == 0) {
    return;
  }
  ++generation;
  // A number in place of user data: which heartbeat this is.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  if (addTimer(kInterval, onTimer, reinterpret_cast<void *>(generation)) != nullptr) {
    lastTurn = now();
  }
}

void stopHeartbeat() {
  ++generation;
  lastTurn = 0;
}

void beat(std::uint64_t time) {
  if (lastTurn.load(std::memory_order_relaxed) != 0) {
    lastTurn.store(time, std::memory_order_relaxed);
  }
}

void watchLoop() {
  static std::uint64_t lastLook = 0;
  static std::uint64_t resumed = 0;
  static std::uint64_t reported = 0;
  const std::uint64_t look = now();
  // A process that was stopped, or got no time, has not held its loop.
  if (look - lastLook > kHeldTooLong) {
    resumed = look;
  }
  lastLook = look;
  const std::uint64_t turn = lastTurn.load(std::memory_order_relaxed);
  const std::uint64_t since = std::max(turn, resumed);
  if (turn == 0 || turn == reported || look < since + kHeldTooLong
      || runningCallback().action != nullptr) {
    return;
  }
  reported = turn;
  Record held(EventKind::LoopHeld);
  held.number(Field::Held, static_cast<std::int64_t>(look - since));
  report(held);
}

} // namespace norix::probe
