// SPDX-License-Identifier: Apache-2.0
#include "lifeCycle.h"

#include "control/LaunchPort.h"
#include "ecore/init.h"
#include "glib/EcorePolling.h"
#include "launcher/launch.h"

#include <Ecore.h>
#include <app_common.h>
#include <atomic>
#include <cstdlib>
#include <dlog.h>
#include <exception>
#include <memory>
#include <string>

namespace platform::application {
namespace {

constexpr const char *kTag = "CAPI_APPFW_APPLICATION";

std::atomic<bool> isRunning{false};
std::atomic<bool> isLoopThere{false};
std::atomic<bool> isEndWanted{false};

/** Marks the process as running an application, unless it is already. */
class MainMark {
public:
  MainMark() : _isFirst(!isRunning.exchange(true)) {
    if (_isFirst) {
      isEndWanted = false;
    }
  }
  ~MainMark() {
    if (_isFirst) {
      isRunning = false;
    }
  }
  MainMark(const MainMark &) = delete;
  MainMark &operator=(const MainMark &) = delete;

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

/// How long a launcher may take to send the request that it has started the application for.
constexpr double kRequestSeconds = 5.0;

/// @return The application's id; empty when the process has none.
std::string ownAppId() {
  char *id = nullptr;
  if (app_get_id(&id) != APP_ERROR_NONE) {
    return {};
  }
  const std::unique_ptr<char, decltype(&std::free)> owned(id, &std::free);
  return id;
}

/// Runs the loop until the launcher's request has come, or it is clear that it will not.
void awaitRequest(const LaunchPort &port) {
  bool isLate = false;
  const auto onLate = [](void *data) -> Eina_Bool {
    *static_cast<bool *>(data) = true;
    return ECORE_CALLBACK_RENEW;
  };
  const std::unique_ptr<Ecore_Timer, decltype(&ecore_timer_del)> timer(
      ecore_timer_add(kRequestSeconds, onLate, &isLate), &ecore_timer_del);
  while (!port.hasWaiting() && !isLate && !isEndWanted) {
    ecore_main_loop_iterate_may_block(1);
  }
}

/// The first app_control callback: for the launcher's request, or for the start itself.
void launchFirst(const LifeCycle &application, LaunchPort &port, LaunchReason reason) {
  if (reason == LaunchReason::Request) {
    awaitRequest(port);
  }
  if (!port.hasWaiting() && !isEndWanted) {
    app_control_s request;
    request.operation = APP_CONTROL_OPERATION_DEFAULT;
    request.appId = ownAppId();
    application.launch(&request);
  }
  if (!isEndWanted) {
    port.deliverTo(application.launch);
  }
}

void live(const LifeCycle &application, LaunchPort &port, LaunchReason reason) {
  if (!application.create()) {
    dlog_print(DLOG_ERROR, kTag, "the create callback returned false: the application ends");
    return;
  }
  if (!isEndWanted) {
    launchFirst(application, port, reason);
    Loop::run();
    application.leave();
  }
  application.terminate();
}

} // namespace

int runLifeCycle(const LifeCycle &application) {
  const MainMark mark;
  if (!mark.isFirst()) {
    return APP_ERROR_ALREADY_RUNNING;
  }
  const std::string id = ownAppId();
  if (id.empty()) {
    return APP_ERROR_INVALID_CONTEXT;
  }

  const Loop loop;
  if (!isLoopThere) {
    dlog_print(DLOG_ERROR, kTag, "the main loop cannot be set up: ecore_init() failed");
    return APP_ERROR_INVALID_CONTEXT;
  }
  const bool isLaunched = wasLaunched();
  const LaunchReason reason = takeLaunchReason();
  LaunchPort port(id, isLaunched);
  live(application, port, reason);
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
