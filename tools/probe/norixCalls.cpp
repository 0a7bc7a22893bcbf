// SPDX-License-Identifier: Apache-2.0
//
// The nine functions of norix.h: each passes its call on and reports the result.
#include "assistant/trace/utf8.h"
#include "probe/Reporter.h"
#include "probe/callbacks.h"
#include "probe/endings.h"
#include "probe/heartbeat.h"
#include "probe/real.h"

#include <norix.h>

#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

using norix::probe::EventKind;
using norix::probe::Field;
using norix::probe::kNorixLibrary;
using norix::probe::Record;
using norix::probe::report;

NORIX_PROBE_REAL(norix_initialize, kNorixLibrary)
NORIX_PROBE_REAL(norix_deinitialize, kNorixLibrary)
NORIX_PROBE_REAL(norix_set_app_state_request_cb, kNorixLibrary)
NORIX_PROBE_REAL(norix_unset_app_state_request_cb, kNorixLibrary)
NORIX_PROBE_REAL(norix_complete_app_state_request, kNorixLibrary)
NORIX_PROBE_REAL(norix_set_action_execution_cb, kNorixLibrary)
NORIX_PROBE_REAL(norix_unset_action_execution_cb, kNorixLibrary)
NORIX_PROBE_REAL(norix_complete_action_execution, kNorixLibrary)
NORIX_PROBE_REAL(norix_get_action_name, kNorixLibrary)

namespace norix::probe {
namespace {

// Ecore's loop belongs to one thread, which Eina knows. Before Ecore was initialised it is the main
// thread that will have it.
bool isOnLoop() {
  using IsLoop = unsigned char();
  static auto *const isLoop = reinterpret_cast<IsLoop *>(dlsym(RTLD_DEFAULT, "eina_main_loop_is"));
  return (isLoop != nullptr && isLoop() != 0) || threadId() == getpid();
}

// A record of a call that has returned.
Record callOf(const char *function, int result) {
  Record call(EventKind::Call);
  call.text(Field::Function, function)
      .number(Field::Result, result)
      .boolean(Field::OnLoop, isOnLoop());
  const RunningCallback running = runningCallback();
  if (running.action != nullptr && running.thread == threadId()) {
    call.number(Field::Inside, static_cast<std::int64_t>(running.request));
  }
  return call;
}

void reportCall(const char *function, int result) {
  report(callOf(function, result));
}

void reportAnswer(const char *function, int result, const void *handle, const char *text) {
  Record call = callOf(function, result);
  call.pointer(Field::Handle, handle);
  if (text != nullptr) {
    const std::string_view answer = text;
    call.number(Field::Length, static_cast<std::int64_t>(answer.size()))
        .boolean(Field::Utf8, assistant::trace::isUtf8(answer))
        .text(Field::Text, answer);
  }
  report(call);
}

template <typename Value>
const Value *exported(const char *name) {
  return static_cast<const Value *>(dlsym(RTLD_DEFAULT, name));
}

// What the library goes by, which the application may have replaced.
void reportInitialize(int result) {
  Record call = callOf("norix_initialize", result);
  const auto *const path = exported<const char *>("NORIX_PROXY_ALLOW_APPID_LIST_PATH");
  const auto *const name = exported<const char *>("NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME");
  if (path != nullptr && name != nullptr && *path != nullptr && *name != nullptr) {
    call.text(Field::AllowList, std::string(*path) + *name);
  }
  const auto *const interval = exported<double>("COMPLETE_CHECKING_TIME");
  const auto *const count = exported<double>("COMPLETE_WAITING_MAX_COUNT");
  if (interval != nullptr && count != nullptr) {
    constexpr double kMilliseconds = 1000.0;
    call.number(Field::CompletionTimeout, std::llround(*interval * *count * kMilliseconds));
  }
  report(call);
}

/// Reports a call that an exception leaves.
class ReportsException {
public:
  explicit ReportsException(const char *function) : _function(function) {}
  ~ReportsException() {
    if (!_returned) {
      Record call(EventKind::Call);
      report(call.text(Field::Function, _function)
                 .boolean(Field::OnLoop, isOnLoop())
                 .boolean(Field::Exception, true));
    }
  }
  ReportsException(const ReportsException &) = delete;
  ReportsException &operator=(const ReportsException &) = delete;

  void returned() { _returned = true; }

private:
  const char *_function;
  bool _returned = false;
};

} // namespace
} // namespace norix::probe

NORIX_PROBE_EXPORT int norix_initialize(void) {
  norix::probe::watchEndings();
  norix::probe::ReportsException guard(__func__);
  const int result = real::norix_initialize();
  guard.returned();
  norix::probe::reportInitialize(result);
  if (result == NORIX_ERROR_NONE) {
    norix::probe::startHeartbeat();
  }
  return result;
}

NORIX_PROBE_EXPORT int norix_deinitialize(void) {
  const int result = real::norix_deinitialize();
  norix::probe::stopHeartbeat();
  norix::probe::reportCall(__func__, result);
  return result;
}

NORIX_PROBE_EXPORT int norix_set_app_state_request_cb(norix_app_state_request_cb callback,
                                                      void *user_data) {
  const bool registers = callback != nullptr && norix::probe::isReporting();
  const int result = registers ? real::norix_set_app_state_request_cb(
                         norix::probe::callState, norix::probe::remember(callback, user_data))
                               : real::norix_set_app_state_request_cb(callback, user_data);
  report(norix::probe::callOf(__func__, result).boolean(Field::Registers, callback != nullptr));
  return result;
}

NORIX_PROBE_EXPORT int norix_unset_app_state_request_cb(void) {
  const int result = real::norix_unset_app_state_request_cb();
  norix::probe::reportCall(__func__, result);
  return result;
}

NORIX_PROBE_EXPORT int norix_complete_app_state_request(void *request_handle,
                                                        const char *app_state) {
  const int result = real::norix_complete_app_state_request(request_handle, app_state);
  norix::probe::reportAnswer(__func__, result, request_handle, app_state);
  return result;
}

NORIX_PROBE_EXPORT int norix_set_action_execution_cb(const char *action_id,
                                                     norix_action_execution_cb callback,
                                                     void *user_data) {
  const bool registers = action_id != nullptr && callback != nullptr && norix::probe::isReporting();
  const int result = registers
                         ? real::norix_set_action_execution_cb(
                             action_id, norix::probe::callAction,
                             norix::probe::remember(action_id, callback, user_data))
                         : real::norix_set_action_execution_cb(action_id, callback, user_data);
  report(norix::probe::callOf(__func__, result)
             .text(Field::Action, action_id)
             .boolean(Field::Registers, callback != nullptr));
  return result;
}

NORIX_PROBE_EXPORT int norix_unset_action_execution_cb(const char *action_id) {
  const int result = real::norix_unset_action_execution_cb(action_id);
  report(norix::probe::callOf(__func__, result).text(Field::Action, action_id));
  return result;
}

NORIX_PROBE_EXPORT int norix_complete_action_execution(void *request_handle, const char *answer) {
  const int result = real::norix_complete_action_execution(request_handle, answer);
  norix::probe::reportAnswer(__func__, result, request_handle, answer);
  return result;
}

NORIX_PROBE_EXPORT int norix_get_action_name(void *request_handle, char **action_id) {
  const int result = real::norix_get_action_name(request_handle, action_id);
  report(norix::probe::callOf(__func__, result)
             .pointer(Field::Handle, request_handle)
             .text(Field::Action, action_id != nullptr ? *action_id : nullptr));
  return result;
}
