// SPDX-License-Identifier: Apache-2.0
#include "probe/callbacks.h"

#include "probe/Reporter.h"
#include "probe/bundleCalls.h"
#include "probe/exceptions.h"
#include "probe/heartbeat.h"
#include "probe/lentBundles.h"

#include <atomic>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

namespace norix::probe {

struct Registration {
  std::string action;
  norix_action_execution_cb actionCallback;
  norix_app_state_request_cb stateCallback;
  void *userData;
};

namespace {

constexpr const char *kStateAction = "getAppContext";
constexpr std::uint64_t kHeldTooLong = 1000000000;

// The running callback, piece by piece: read by other threads and by signal handlers.
std::atomic<const char *> runningAction{nullptr};
std::atomic<std::uint64_t> runningRequest{0};
std::atomic<std::uint64_t> runningSince{0};
std::atomic<int> runningThread{0};

std::atomic<std::uint64_t> requests{0};

using Key = std::tuple<std::string, norix_action_execution_cb, norix_app_state_request_cb, void *>;

Registration *remember(Key key) {
  // Not destroyed: callbacks may run while the process ends.
  static auto *const registrations = new std::map<Key, std::unique_ptr<Registration>>;
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  std::unique_ptr<Registration> &registration = (*registrations)[key];
  if (registration == nullptr) {
    registration = std::make_unique<Registration>(
        Registration{std::get<0>(key), std::get<1>(key), std::get<2>(key), std::get<3>(key)});
  }
  return registration.get();
}

void setRunning(const RunningCallback &running) {
  runningAction.store(running.action, std::memory_order_relaxed);
  runningRequest.store(running.request, std::memory_order_relaxed);
  runningThread.store(running.thread, std::memory_order_relaxed);
  runningSince.store(running.since, std::memory_order_release);
}

/// One call of a callback, from the report of its beginning to that of its end. An exception is
/// reported and passes: catching it here would lose the place it was thrown at.
class Call {
public:
  explicit Call(const char *action);
  ~Call();
  Call(const Call &) = delete;
  Call &operator=(const Call &) = delete;

  std::uint64_t request() const { return _request; }

private:
  const RunningCallback _outer;
  const std::uint64_t _request;
  const std::uint64_t _since;
  const int _exceptions;
};

Call::Call(const char *action)
    : _outer(runningCallback()), _request(latestRequest()), _since(now()),
      _exceptions(std::uncaught_exceptions()) {
  setRunning({action, _request, _since, threadId()});
}

Call::~Call() {
  Record left(EventKind::CallbackLeft);
  const std::uint64_t end = left.time();
  left.number(Field::Request, static_cast<std::int64_t>(_request))
      .text(Field::Action, runningAction.load(std::memory_order_relaxed))
      .number(Field::Held, static_cast<std::int64_t>(end - _since));
  if (std::uncaught_exceptions() > _exceptions) {
    left.text(Field::Exception, lastException().type).text(Field::What, lastException().what);
  }
  report(left);
  beat(end);
  setRunning(_outer);
}

void reportEntered(std::uint64_t request, const Registration &registration, const void *handle,
                   const RequestTexts &texts) {
  Record entered(EventKind::CallbackEntered);
  entered.number(Field::Request, static_cast<std::int64_t>(request))
      .text(Field::Kind, registration.actionCallback != nullptr ? "action" : "state")
      .text(Field::Action, std::string_view(registration.action))
      .pointer(Field::Handle, handle);
  if (texts.actionId != nullptr) {
    entered.boolean(Field::Deferred, handle == texts.actionId);
  }
  report(entered);
}

} // namespace

Registration *remember(const char *actionId, norix_action_execution_cb callback, void *userData) {
  return remember({actionId, callback, nullptr, userData});
}

Registration *remember(norix_app_state_request_cb callback, void *userData) {
  return remember({kStateAction, nullptr, callback, userData});
}

void callAction(void *handle, bundle *params, void *registration) {
  const auto &called = *static_cast<Registration *>(registration);
  const RequestTexts texts = readRequest(params);
  const Call call(called.action.c_str());
  reportEntered(call.request(), called, handle, texts);
  const Loan loan(params, call.request(), texts);
  called.actionCallback(handle, params, called.userData);
}

void callState(void *handle, void *registration) {
  const auto &called = *static_cast<Registration *>(registration);
  const Call call(called.action.c_str());
  reportEntered(call.request(), called, handle, {});
  called.stateCallback(handle, called.userData);
}

RunningCallback runningCallback() {
  RunningCallback running = {};
  running.since = runningSince.load(std::memory_order_acquire);
  running.action = runningAction.load(std::memory_order_relaxed);
  running.request = runningRequest.load(std::memory_order_relaxed);
  running.thread = runningThread.load(std::memory_order_relaxed);
  return running;
}

std::uint64_t countRequest() {
  return requests.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint64_t latestRequest() {
  return requests.load(std::memory_order_relaxed);
}

void watchCallback() {
  static std::uint64_t reported = 0;
  const RunningCallback running = runningCallback();
  if (running.action == nullptr || running.since == reported
      || now() - running.since < kHeldTooLong) {
    return;
  }
  reported = running.since;
  Record held(EventKind::CallbackHeld);
  held.number(Field::Request, static_cast<std::int64_t>(running.request))
      .text(Field::Action, running.action)
      .number(Field::Held, static_cast<std::int64_t>(now() - running.since));
  report(held);
}

} // namespace norix::probe
