// SPDX-License-Identifier: Apache-2.0
#include "lifeCycle.h"

#include "ecore/init.h"
#include "glib/EcorePolling.h"

#include <Ecore.h>
#include <app_common.h>
#include <atomic>
#include <cstdlib>
#include <dlog.h>
#include <exception>

/** The launch request, which carries nothing here. Its address is all that there is to it. */
struct app_control_s {};

namespace platform::application {
namespace {

constexpr const char *kTag = "CAPI_APPFW_APPLICATION";

std::atomic<bool> isRunning{false};
std::atomic<bool> isLoopThere{false};
std::atomic<bool> isEndWanted{false};

/** Marks the process as running an application, unless it is already. */
class RunningMark {
public:
  RunningMark() : _isFirst(!isRunning.exchange(true)) {
    if (_isFirst) {
      isEndWanted = false;
    }
  }
  ~RunningMark() {
    if (_isFirst) {
      isRunning = false;
    }
  }
  RunningMark(const RunningMark &) = delete;
  RunningMark &operator=(const RunningMark &) = delete;

  bool isFirst() const { return _isFirst; }

private:
  bool _isFirst;
};

/** Ecore, for as long as the application lives. */
class Loop {
public:
  Loop() : _exceptions(std::uncaught_exceptions()) {
    isLoopThere = platform::ecore::initialize();
    if (isLoopThere) {
      platform::glib::startEcorePolling();
      _signalHandler = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, endOnSignal, nullptr);
    }
  }
  ~Loop() {
    if (!isLoopThere.exchange(false)) {
      return;
    }
    if (std::uncaught_exceptions() > _exceptions) {
      // An exception that passed through Ecore's loop leaves Ecore convinced that it is still in
      // it. It shuts down all the same, but complains at length about what nobody can cure.
      eina_log_domain_level_set("ecore", EINA_LOG_LEVEL_CRITICAL);
    }
    platform::glib::stopEcorePolling();
    ecore_event_handler_del(_signalHandler);
    platform::ecore::shutdown();
  }
  Loop(const Loop &) = delete;
  Loop &operator=(const Loop &) = delete;

  // Ecore forgets a request to quit that comes before the loop begins.
  static void run() {
    if (!isEndWanted) {
      platform::glib::startEcorePolling(); // Again, because create() may have loaded GLib.
      ecore_main_loop_begin();
    }
  }

private:
  static Eina_Bool endOnSignal(void * /*data*/, int /*type*/, void * /*event*/) {
    endLifeCycle();
    return ECORE_CALLBACK_PASS_ON;
  }

  int _exceptions;
  Ecore_Event_Handler *_signalHandler = nullptr;
};

bool isApplication() {
  char *id = nullptr;
  const int result = app_get_id(&id);
  free(id);
  return result == APP_ERROR_NONE;
}

void live(const LifeCycle &application) {
  if (!application.create()) {
    dlog_print(DLOG_ERROR, kTag, "the create callback returned false: the application ends");
    return;
  }
  if (!isEndWanted) {
    app_control_s launchRequest;
    application.launch(&launchRequest);
    Loop::run();
    application.leave();
  }
  application.terminate();
}

} // namespace

int runLifeCycle(const LifeCycle &application) {
  const RunningMark mark;
  if (!mark.isFirst()) {
    return APP_ERROR_ALREADY_RUNNING;
  }
  if (!isApplication()) {
    return APP_ERROR_INVALID_CONTEXT;
  }

  const Loop loop;
  if (!isLoopThere) {
    dlog_print(DLOG_ERROR, kTag, "the main loop cannot be set up: ecore_init() failed");
    return APP_ERROR_INVALID_CONTEXT;
  }
  live(application);
  return APP_ERROR_NONE;
}

void endLifeCycle() {
  isEndWanted = true;
  if (isLoopThere) {
    // Called at once when on the loop's own thread.
    ecore_main_loop_thread_safe_call_async([](void *) { ecore_main_loop_quit(); }, nullptr);
  }
}

} // namespace platform::application
