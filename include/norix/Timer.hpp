/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_TIMER_HPP
#define NORIX_TIMER_HPP

#include <norix/Error.hpp>
#include <norix/detail/guarded.hpp>
#include <norix/detail/log.hpp>

#include <Ecore.h>

#include <memory>
#include <utility>

namespace norix {

/**
 * @brief Calls something once, some time later, on the main loop: for an answer that takes a while.
 * @details A timer that is destroyed, stopped or started anew drops what it has not called yet, and
 * a request that was moved into it with it; see Request::answerIfForgotten(). All of this is
 * allowed inside what it calls as well. An exception that leaves the callable is logged.
 *
 * Thread: the main loop's, between the platform's create and terminate callbacks. Captured by a
 * callable of the Assistant, it ends with the Assistant.
 * @code
 * assistant.onAction("musicNext",
 *                    [&player, timer = norix::Timer()](norix::Request request) mutable {
 *   timer.start(0.5, [&player, request = std::move(request)]() mutable {
 *     request.answer("Playing " + player.loadNext());
 *   });
 * });
 * @endcode
 */
class Timer {
public:
  /** @brief A timer that calls nothing. */
  Timer() = default;
  /** @brief Takes over what is to be called. */
  Timer(Timer &&) noexcept = default;
  /** @brief Takes over what is to be called; what this timer was to call is dropped. */
  Timer &operator=(Timer &&) noexcept = default;
  Timer(const Timer &) = delete;
  Timer &operator=(const Timer &) = delete;
  /** @brief What was not called yet is dropped. */
  ~Timer() = default;

  /**
   * @brief Calls this after so many seconds, in the place of what was to be called until now.
   * @param seconds   From now
   * @param callable  Called without arguments; may be move-only. Destroyed after the call
   * @throw Error  This is not the main loop's thread, or memory is short. Without exceptions that
   *               is logged. The callable is dropped
   */
  template <class Callable>
  void start(double seconds, Callable callable) {
    stop();
    auto scheduled = std::make_unique<Scheduled>();
    scheduled->task = std::make_shared<TaskOf<Callable>>(std::move(callable));
    scheduled->timer = ecore_timer_add(seconds, onTime, scheduled.get());
    if (scheduled->timer != nullptr) {
      _scheduled = std::move(scheduled);
    } else {
      detail::raise(Error("norix::Timer::start", NORIX_ERROR_OPERATION_FAILED,
                          "start timers on the main loop's thread, while the loop exists"));
    }
  }

  /** @brief Drops what was to be called. Does nothing when there is nothing. */
  void stop() noexcept { _scheduled.reset(); }

private:
  // A pointer to a function takes the place of a virtual one, as in Handler.
  struct Task {
    explicit Task(void (*function)(Task &)) noexcept : call(function) {}

    void (*call)(Task &);
  };

  template <class Callable>
  struct TaskOf final : Task {
    explicit TaskOf(Callable given) : Task(&call), callable(std::move(given)) {}

    static void call(Task &self) { static_cast<TaskOf &>(self).callable(); }

    Callable callable;
  };

  // Stays where it is when the Timer is moved: Ecore knows its address.
  struct Scheduled {
    Scheduled() = default;
    Scheduled(const Scheduled &) = delete;
    Scheduled &operator=(const Scheduled &) = delete;
    ~Scheduled() {
      if (timer != nullptr) {
        static_cast<void>(ecore_timer_del(timer));
      }
    }

    std::shared_ptr<Task> task{};
    Ecore_Timer *timer = nullptr;
  };

  // The timer ends by the value returned. The callable may destroy what it is scheduled by.
  static Eina_Bool onTime(void *data) noexcept {
    auto *const scheduled = static_cast<Scheduled *>(data);
    scheduled->timer = nullptr;
    const std::shared_ptr<Task> task = std::move(scheduled->task);
    detail::guarded([&task] { task->call(*task); },
                    [](const char *why) {
                      dlog_print(DLOG_ERROR, detail::kLogTag,
                                 "what a timer called failed with an exception: %s", why);
                    });
    return ECORE_CALLBACK_CANCEL;
  }

  std::unique_ptr<Scheduled> _scheduled{};
};

} // namespace norix

#endif
