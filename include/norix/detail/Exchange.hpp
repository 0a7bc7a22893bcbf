/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_EXCHANGE_HPP
#define NORIX_DETAIL_EXCHANGE_HPP

#include <norix.h>
#include <norix/Outcome.hpp>
#include <norix/detail/guarded.hpp>
#include <norix/detail/log.hpp>

#include <Ecore.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norix {
namespace detail {

enum class Kind { State, Action };

// The id of an action, shared by its registration and its requests.
using SharedId = std::shared_ptr<const std::string>;

// Names a request for as long as the process runs: ids are never used again, so that a request of
// a destroyed Assistant never belongs to a later one. 0 is the id of a request that was answered.
using RequestId = std::uint64_t;

// The lowest bit of an id marks a request that arrived before its action was registered: the
// library has no way to answer it, so nobody waits for it.
constexpr RequestId kEarlyMark = 1;

constexpr bool isEarly(RequestId id) noexcept {
  return (id & kEarlyMark) != 0;
}

// Instead of a request that waits. Not 0: nobody waits for a spent request either.
constexpr RequestId kNobody = ~RequestId{0};

// What a process has one of, like the library itself: the request that waits for its answer, and
// the answers on their way from other threads. Never destroyed: a thread may still hold a request
// while the process ends. Shared by all modules of the process, hence the visibility.
class __attribute__((visibility("default"))) Exchange {
public:
  static Exchange &instance() {
    static Exchange *const exchange = new Exchange;
    return *exchange;
  }
  Exchange(const Exchange &) = delete;
  Exchange &operator=(const Exchange &) = delete;

  // From now on the calling thread is the main loop's. False when there is an Assistant already.
  bool open() {
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_isOpen) {
      return false;
    }
    _isOpen = true;
    _mainThread.store(std::this_thread::get_id());
    _forgottenAnswer.clear();
    return true;
  }

  // Answers from other threads that came in time are sent; later ones are refused from here on.
  void close() noexcept {
    {
      const std::lock_guard<std::mutex> lock(_mutex);
      _isOpen = false;
    }
    sendPosted();
    _current.store(kNobody);
    std::string().swap(_spare);
  }

  bool isMainThread() const noexcept {
    return _mainThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }

  // A request has arrived; whatever waited before waits no longer.
  RequestId begin(Kind kind, void *handle) noexcept {
    const RequestId id = nextId();
    _current.store(id);
    _kind = kind;
    _handle = handle;
    return id;
  }
  RequestId beginEarly() noexcept {
    _current.store(kNobody);
    return nextId() | kEarlyMark;
  }

  // The callback of this request begins. The result is for leave(): callbacks nest where main loops
  // do.
  RequestId enter(RequestId id) noexcept { return std::exchange(_running, id); }
  // It has ended. A request that an exception destroyed, which went no further than the callback's
  // own try block, is still without an answer.
  void leave(RequestId id, const SharedId &actionId, RequestId before) noexcept {
    if (_unwound.has_value()) {
      if (isWaiting(id)) {
        forgotten(id, actionId, std::move(*_unwound));
      }
      _unwound.reset();
    }
    _running = before;
  }
  bool isRunning(RequestId id) const noexcept { return isMainThread() && id == _running; }

  // Whether somebody waits for the answer to this request, as far as can be told without asking the
  // library: from another thread that is all there is.
  bool isWaiting(RequestId id) const noexcept { return _current.load() == id; }
  bool isCurrent(RequestId id, const SharedId &actionId) const noexcept {
    return isWaiting(id) && (!isMainThread() || isKnownToLibrary(*actionId));
  }

  // The road of every answer: inlined as a whole, with what is rare on it kept out of line.
  __attribute__((always_inline)) inline Outcome answer(RequestId id, const SharedId &actionId,
                                                       const char *text) noexcept {
    return isMainThread() ? send(id, actionId, text) : post(id, actionId, text);
  }

  // The copy of the parameters that a request owns. It is made in the memory of an earlier one:
  // nearly every request ends before the next one comes.
  std::string copied(const char *params) {
    std::string copy = std::move(_spare);
    copy.append(params);
    return copy;
  }
  void recycle(std::string &params) noexcept {
    const std::size_t capacity = params.capacity();
    if (isMainThread() && _isOpen && capacity > _spare.capacity() && capacity <= kMostSpare) {
      _spare = std::move(params);
      _spare.clear();
    }
  }

  // What a request that was destroyed without an answer is answered with; empty: it is not.
  void setForgottenAnswer(std::string text) {
    const std::lock_guard<std::mutex> lock(_mutex);
    _forgottenAnswer = std::move(text);
  }

  // A request was destroyed without an answer.
  void forgotten(RequestId id, const SharedId &actionId, std::string text) noexcept {
    if (!isWaiting(id)) {
      return;
    }
    if (std::uncaught_exceptions() > 0 && isRunning(id)) {
      // Most likely the exception ends the callback, and the answer says that it failed; see
      // leave().
      _unwound = std::move(text);
      return;
    }
    dlog_print(DLOG_ERROR, kLogTag, "'%s': the request was destroyed without an answer",
               actionId->c_str());
    guarded(
        [&] {
          const std::string answered = text.empty() ? forgottenAnswer() : std::move(text);
          if (!answered.empty()) {
            static_cast<void>(answer(id, actionId, answered.c_str()));
          }
        },
        [](const char * /*what*/) {});
  }

private:
  // Parameters that are longer are rare, and not worth their memory.
  static constexpr std::size_t kMostSpare = 4096;

  std::string forgottenAnswer() {
    const std::lock_guard<std::mutex> lock(_mutex);
    return _forgottenAnswer;
  }

  struct Posted {
    RequestId id;
    SharedId actionId;
    std::string text;
  };

  static void onPosted(void * /*data*/) { instance().sendPosted(); }

  Exchange() = default;

  RequestId nextId() noexcept { return _lastId += 2 * kEarlyMark; }

  // The handle names a request of the library's; which one, the library knows by the action's id.
  // A later request that this interface was not told of (of an action that nobody registered, or
  // registered in C) and a time-out have made it forget the handle.
  __attribute__((noinline)) bool isKnownToLibrary(const std::string &actionId) const noexcept {
    char *name = nullptr;
    const int result = norix_get_action_name(_handle, &name);
    const bool isKnown = result == NORIX_ERROR_NONE && (name == nullptr || actionId == name);
    std::free(name);
    return isKnown;
  }

  __attribute__((always_inline)) inline Outcome send(RequestId id, const SharedId &actionId,
                                                     const char *text) noexcept {
    // Inside its own callback a request is known: the question can be saved.
    if (!isWaiting(id) || (id != _running && !isKnownToLibrary(*actionId))) {
      return refused(id, actionId);
    }
    _current.store(kNobody);
    const int result =
        guarded([this, text] { return complete(text); },
                [](const char * /*what*/) -> int { return NORIX_ERROR_OUT_OF_MEMORY; });
    return result == NORIX_ERROR_NONE ? Outcome::Sent : failed(actionId->c_str(), result);
  }

  int complete(const char *text) const {
    return _kind == Kind::State ? norix_complete_app_state_request(_handle, text)
                                : norix_complete_action_execution(_handle, text);
  }

  __attribute__((noinline)) Outcome post(RequestId id, const SharedId &actionId,
                                         const char *text) noexcept {
    return guarded(
        [&] {
          Posted posted{id, actionId, text != nullptr ? text : "null"};
          const std::lock_guard<std::mutex> lock(_mutex);
          // Ecore is there as long as the Assistant is, and that cannot go while this lock is held.
          if (!_isOpen || !isWaiting(id)) {
            return refused(id, actionId);
          }
          _posted.push_back(std::move(posted));
          if (_posted.size() == 1) {
            ecore_main_loop_thread_safe_call_async(onPosted, nullptr);
          }
          return Outcome::OnItsWay;
        },
        [&](const char *what) {
          dlog_print(DLOG_ERROR, kLogTag, "'%s': the answer is lost: %s", actionId->c_str(), what);
          return Outcome::Failed;
        });
  }

  void sendPosted() noexcept {
    std::vector<Posted> posted;
    {
      const std::lock_guard<std::mutex> lock(_mutex);
      posted.swap(_posted);
    }
    for (const Posted &answer : posted) {
      send(answer.id, answer.actionId, answer.text.c_str());
    }
  }

  // Why an answer goes nowhere. A request that was moved from has no action any more.
  __attribute__((noinline)) static Outcome refused(RequestId id,
                                                   const SharedId &actionId) noexcept {
    const char *why = "the answer was dropped, nobody waits for it any more: the request was "
                      "replaced or answered, or it timed out";
    Outcome outcome = Outcome::NobodyWaits;
    if (id == 0) {
      why = "the answer was refused: this request was answered before, or moved from";
      outcome = Outcome::Spent;
    } else if (isEarly(id)) {
      why = "the answer was dropped: the request arrived before the action was registered, and "
            "cannot be answered. Register actions right after the Assistant is made";
      outcome = Outcome::CannotBeAnswered;
    }
    dlog_print(DLOG_ERROR, kLogTag, "'%s': %s", actionId != nullptr ? actionId->c_str() : "", why);
    return outcome;
  }

  __attribute__((noinline)) static Outcome failed(const char *actionId, int result) noexcept {
    dlog_print(DLOG_ERROR, kLogTag,
               "'%s': the answer could not be sent (%d): the assistant is gone, or the library was "
               "deinitialised",
               actionId, result);
    return Outcome::Failed;
  }

  // Written by the main loop, read by every thread.
  std::atomic<RequestId> _current{kNobody};
  std::atomic<std::thread::id> _mainThread{};
  // The main loop's own.
  RequestId _lastId = 0;
  RequestId _running = 0;
  Kind _kind = Kind::State;
  void *_handle = nullptr;
  std::optional<std::string> _unwound{};
  std::string _spare{};
  // Written under the mutex.
  std::atomic<bool> _isOpen{false};
  // Guarded by the mutex.
  std::mutex _mutex{};
  std::vector<Posted> _posted{};
  std::string _forgottenAnswer{};
};

} // namespace detail
} // namespace norix

#endif
