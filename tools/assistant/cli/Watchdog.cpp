// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Watchdog.h"

#include <Ecore.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <mutex>
#include <optional>
#include <thread>
#include <unistd.h>
#include <utility>

namespace norix::assistant::cli {
namespace {

using Clock = std::chrono::steady_clock;

// Told to the thread when something has changed for it.
constexpr int kWake = SIGURG;

sigset_t watchedSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, kWake}) {
    sigaddset(&set, number);
  }
  return set;
}

Outcome outcomeOf(int signal) {
  if (signal == SIGINT) {
    return Outcome::Interrupted;
  }
  return signal == SIGTERM ? Outcome::Terminated : Outcome::HungUp;
}

int signalOf(int type, const void *event) {
  if (type == ECORE_EVENT_SIGNAL_HUP) {
    return SIGHUP;
  }
  return static_cast<const Ecore_Event_Signal_Exit *>(event)->interrupt ? SIGINT : SIGTERM;
}

// To the process, where the watchdog waits for it.
Eina_Bool sendAgain(void * /*unused*/, int type, void *event) {
  (void)kill(getpid(), signalOf(type, event));
  return ECORE_CALLBACK_DONE;
}

timespec toTimespec(std::chrono::nanoseconds time) {
  constexpr long kPerSecond = 1000000000;
  const auto count = std::max<std::chrono::nanoseconds::rep>(time.count(), 0);
  return {count / kPerSecond, count % kPerSecond};
}

} // namespace

Outcome outcomeOfSignal(int type, const void *event) {
  return outcomeOf(signalOf(type, event));
}

struct Watchdog::State {
  explicit State(Console &shown) : console(shown) {}

  void run();
  void wake();
  std::chrono::nanoseconds untilNext();
  void look();
  void showProgress(Clock::duration left);
  [[noreturn]] void end(const Ending &ending);

  Console &console;
  const Clock::time_point begin = Clock::now();
  sigset_t before = {};
  // Guards what follows; whoever ends the process keeps it.
  std::mutex mutex;
  std::optional<Clock::time_point> deadline;
  std::string awaited;
  Ending late;
  std::function<void()> atEnd;
  bool isFinished = false;
  bool isStopped = false;
  std::thread thread;
};

Watchdog::Watchdog(Console &console) : _state(std::make_unique<State>(console)) {
  // A script's background job is started with SIGINT ignored; who sends it means it.
  std::signal(SIGINT, SIG_DFL);
  const sigset_t signals = watchedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, &_state->before);
  _state->thread = std::thread([state = _state.get()] { state->run(); });
}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(_state->mutex);
    _state->isStopped = true;
    _state->wake();
  }
  _state->thread.join();
  pthread_sigmask(SIG_SETMASK, &_state->before, nullptr);
}

void Watchdog::allow(double seconds) {
  const std::lock_guard<std::mutex> lock(_state->mutex);
  _state->deadline =
      Clock::now()
      + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  _state->wake();
}

void Watchdog::expect(const std::string &what, const Ending &late) {
  const std::lock_guard<std::mutex> lock(_state->mutex);
  _state->awaited = what;
  _state->late = late;
}

void Watchdog::onEnd(std::function<void()> action) {
  const std::lock_guard<std::mutex> lock(_state->mutex);
  _state->atEnd = std::move(action);
}

void Watchdog::finish() {
  const std::lock_guard<std::mutex> lock(_state->mutex);
  _state->isFinished = true;
  _state->console.showProgress({});
}

void Watchdog::blockSignals() {
  const sigset_t signals = watchedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, sendAgain, nullptr);
  ecore_event_handler_add(ECORE_EVENT_SIGNAL_HUP, sendAgain, nullptr);
}

double Watchdog::secondsPassed() const {
  return std::chrono::duration<double>(Clock::now() - _state->begin).count();
}

void Watchdog::State::wake() {
  pthread_kill(thread.native_handle(), kWake);
}

void Watchdog::State::run() {
  const sigset_t signals = watchedSignals();
  while (true) {
    const timespec next = toTimespec(untilNext());
    const int signal = sigtimedwait(&signals, nullptr, &next);
    const std::lock_guard<std::mutex> lock(mutex);
    if (isStopped) {
      return;
    }
    if (signal > 0 && signal != kWake) {
      end({outcomeOf(signal), {}});
    }
    look();
  }
}

// A second at the most, for the line on a terminal.
std::chrono::nanoseconds Watchdog::State::untilNext() {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::chrono::nanoseconds second = std::chrono::seconds(1);
  return deadline && !isFinished
             ? std::min(second, std::chrono::nanoseconds(*deadline - Clock::now()))
             : second;
}

void Watchdog::State::look() {
  if (!deadline || isFinished) {
    return;
  }
  const Clock::duration left = *deadline - Clock::now();
  if (left <= Clock::duration::zero()) {
    end(late);
  }
  showProgress(left);
}

void Watchdog::State::showProgress(Clock::duration left) {
  if (Clock::now() - begin < std::chrono::seconds(1)) {
    return;
  }
  const double seconds = std::ceil(std::chrono::duration<double>(left).count());
  console.showProgress(awaited + ": " + std::to_string(static_cast<long>(seconds)) + " s left");
}

void Watchdog::State::end(const Ending &ending) {
  if (atEnd) {
    atEnd();
  }
  // After finish() the answer is on its way out: only the signal's status is left to give.
  _exit(isFinished ? rowOf(ending.outcome).status : console.end(ending));
}

} // namespace norix::assistant::cli
