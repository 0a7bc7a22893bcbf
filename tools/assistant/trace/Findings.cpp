// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/Findings.h"

#include "assistant/trace/checks.h"
#include "assistant/trace/logTexts.h"
#include "assistant/trace/names.h"

#include <norix.h>

#include <array>
#include <cstdio>
#include <utility>

namespace norix::assistant::trace {
namespace {

constexpr const char *kStateAction = "getAppContext";
constexpr const char *kNullHandle = "0x0";
constexpr double kNanoseconds = 1e9;
constexpr std::int64_t kHeldTooLong = 1000000000;
// Handles come round after 100 requests; older ones cannot be told apart anyway.
constexpr std::int64_t kRemembered = 100;

std::string seconds(std::uint64_t nanoseconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f s",
                static_cast<double>(nanoseconds) / kNanoseconds);
  return text.data();
}

std::uint64_t age(std::uint64_t since, std::uint64_t now) {
  return now > since ? now - since : 0;
}

std::string nameOf(const std::string &action) {
  return action == kStateAction ? "the app state" : "'" + action + "'";
}

} // namespace

std::vector<Finding> Findings::see(const Event &event) {
  using See = void (Findings::*)(const Event &);
  static const std::map<std::string, See> kSees = {{"call", &Findings::seeCall},
                                                   {"received", &Findings::seeReceived},
                                                   {"callback-entered", &Findings::seeEntered},
                                                   {"callback-left", &Findings::seeLeft},
                                                   {"callback-held", &Findings::seeHeld},
                                                   {"loop-held", &Findings::seeLoopHeld},
                                                   {"lent-bundle-freed", &Findings::seeLentBundle},
                                                   {"lent-bundle-used", &Findings::seeLentBundle},
                                                   {"signal", &Findings::seeSignal},
                                                   {"exit", &Findings::seeExit},
                                                   {"log", &Findings::seeLog}};
  _found.clear();
  const auto found = kSees.find(event.name);
  if (found != kSees.end()) {
    (this->*found->second)(event);
  }
  return std::move(_found);
}

void Findings::seeCall(const Event &event) {
  const std::string function = event.text("function");
  seeThread(event);
  if (function == "norix_initialize") {
    seeInitialize(event);
  } else if (function == "norix_deinitialize") {
    seeDeinitialize(event);
  } else if (!_isInitialised) {
    seeEarlyCall(function, static_cast<int>(event.number("result")));
  } else if (isAnswer(function)) {
    seeAnswer(event);
  } else {
    seeRegistration(event);
  }
}

void Findings::seeInitialize(const Event &event) {
  if (event.has("exception")) {
    _hasFailed = true;
    add("initialize-failed",
        "norix_initialize() threw an exception: the process has no application id; start it with "
        "norix-assistant launch, or put tizen-manifest.xml beside the program");
    return;
  }
  const auto result = static_cast<int>(event.number("result"));
  _failure = result;
  if (result == NORIX_ERROR_NONE) {
    _isInitialised = true;
    _hasFailed = false;
    _allowList = event.text("allowList");
    seeRefusal("com.valtren.tizen.norix");
    return;
  }
  _hasFailed = true;
  if (result == NORIX_ERROR_NOT_SUPPORTED) {
    add("initialize-failed",
        "norix_initialize() returned NORIX_ERROR_NOT_SUPPORTED: the manifest of '" + _appId
            + "' declares no SDK version that the library serves; add <metadata key=\""
            + NORIX_SDK_VERSION_METADATA_KEY + "\" value=\"1.0-beta\"/>");
  } else if (result == NORIX_ERROR_OPERATION_FAILED) {
    add("started-twice",
        "norix_initialize() cannot listen: most likely '" + _appId
            + "' runs already; end the other process (norix-assistant launch --stop " + _appId
            + ", if it was launched so), then start it again; the log names any other reason");
  } else {
    add("initialize-failed", "norix_initialize() returned " + resultName(result));
  }
}

void Findings::seeEarlyCall(const std::string &function, int result) {
  const std::string call = function + "()";
  if (_hasFailed) {
    addOnce("initialize-ignored", "",
            "norix_initialize() failed with " + resultName(_failure) + ", and " + call
                + " was called all the same, in vain; look at the result, and do without voice "
                  "when it is not NORIX_ERROR_NONE");
    return;
  }
  addOnce("called-before-initialize", function,
          call + " was called while the library is not initialised, and did nothing ("
              + resultName(result) + "); call norix_initialize() first");
}

void Findings::seeThread(const Event &event) {
  if (event.flag("onLoop") || !event.has("onLoop")) {
    return;
  }
  const std::string function = event.text("function");
  addOnce("wrong-thread", function,
          function + "() was called from thread " + std::to_string(event.number("thread"))
              + ", which is not the main loop's, and the library takes no locks; hand the call to "
                "the loop with ecore_main_loop_thread_safe_call_async(function, data)");
}

void Findings::seeRegistration(const Event &event) {
  const std::string function = event.text("function");
  if (event.number("result") != NORIX_ERROR_NONE || function == "norix_get_action_name") {
    return;
  }
  const bool isState = function.find("app_state") != std::string::npos;
  const std::string action = isState ? kStateAction : event.text("action");
  if (!event.flag("registers")) {
    _registered.erase(action);
    return;
  }
  if (!_registered.insert(action).second) {
    add("registered-twice", "a callback for " + nameOf(action)
                                + " was registered again, and replaced the first; register it "
                                  "once, or unset it before");
  }
}

void Findings::seeDeinitialize(const Event &event) {
  if (event.has("inside")) {
    const Request *const request = find(event.number("inside"));
    add("deinitialized-in-callback",
        "norix_deinitialize() was called inside the callback of "
            + (request != nullptr ? nameOf(request->action) : "a request")
            + ": its request gets no answer, and what the callback still uses of it is gone; "
              "answer first, and deinitialise from the main loop after the callback returned "
              "(ecore_job_add)");
  }
  _isInitialised = false;
  _registered.clear();
}

void Findings::seeAnswer(const Event &event) {
  const std::string function = event.text("function");
  const std::string handle = event.text("handle");
  if (event.has("utf8") && !event.flag("utf8")) {
    add("answer-not-utf8", "the text given to " + function
                               + "() is not UTF-8, which the assistant cannot read out; convert it "
                                 "before");
  }
  if (handle == kNullHandle) {
    add("answered-without-handle",
        function
            + "() was called with a null handle; keep the request_handle that the callback "
              "was given, and answer with that");
    return;
  }
  const auto known = _handles.find(handle);
  Request *const request = known != _handles.end() ? find(known->second) : nullptr;
  if (request != nullptr) {
    judgeAnswer(event, *request);
  }
}

void Findings::judgeAnswer(const Event &event, Request &request) {
  const std::string function = event.text("function");
  const std::string name = nameOf(request.action);
  const bool isForState = function == "norix_complete_app_state_request";
  if (request.isState != isForState) {
    add("answered-other-kind", function + "() was called with the handle of a request for " + name
                                   + "; call "
                                   + (request.isState ? "norix_complete_app_state_request()"
                                                      : "norix_complete_action_execution()"));
  } else if (request.isDeferred) {
    return; // Said when its callback was called.
  } else if (request.number != _latest) {
    add("answered-replaced", "the answer to the request for " + name
                                 + " was dropped: a newer request has taken its place; answer "
                                   "within the callback, or sooner");
  } else if (request.isAnswered) {
    add("answered-twice", "the request for " + name
                              + " was answered a second time, and that answer was dropped; answer "
                                "each request once");
  } else if (request.hasTimedOut) {
    add("answered-too-late",
        "the request for " + name + " was answered " + seconds(age(request.received, event.time))
            + " after it came, when the library had told the assistant that it timed out; answer "
              "sooner");
  } else {
    request.isAnswered = true;
  }
}

void Findings::seeReceived(const Event &event) {
  Request request;
  request.number = event.number("request");
  request.action = event.text("action");
  request.received = event.time;
  request.isState = request.action == kStateAction;
  _latest = request.number;
  _requests[request.number] = request;
  _requests.erase(_requests.begin(), _requests.lower_bound(request.number - kRemembered));
}

void Findings::seeEntered(const Event &event) {
  Request *const request = find(event.number("request"));
  if (request == nullptr) {
    return;
  }
  request->wasEntered = true;
  request->isDeferred = event.flag("deferred");
  _handles[event.text("handle")] = request->number;
  if (request->isDeferred) {
    add("registered-late",
        "the callback of " + nameOf(request->action)
            + " was registered while its first request waited for it: the action is executed, but "
              "that request has a handle that cannot be answered, and times out; register "
              "callbacks right after norix_initialize()");
  }
}

void Findings::seeLeft(const Event &event) {
  if (event.has("exception")) {
    add("exception-from-callback",
        "the callback of " + nameOf(event.text("action")) + " was left by an exception, "
            + exceptionIn(event)
            + ", and nobody answers its request; catch it inside the callback, and answer with "
              "what went wrong");
  }
  if (event.number("held") >= kHeldTooLong) {
    seeHeld(event);
  }
}

void Findings::seeHeld(const Event &event) {
  Request *const request = find(event.number("request"));
  if (request == nullptr || request->isHeldReported) {
    return;
  }
  request->isHeldReported = true;
  add("loop-held", "the callback of " + nameOf(request->action) + " has held the main loop for "
                       + seconds(static_cast<std::uint64_t>(event.number("held")))
                       + ", during which the application does nothing else; do the work in a "
                         "thread or in steps, return, and answer when it is done");
}

void Findings::seeLoopHeld(const Event &event) {
  add("loop-held",
      "the main loop has stood still for "
          + seconds(static_cast<std::uint64_t>(event.number("held")))
          + " outside the callbacks, and requests wait meanwhile: a timer, a job or an "
            "event handler of the application computes or waits; do the work in a "
            "thread or in steps");
}

void Findings::seeLentBundle(const Event &event) {
  const Request *const request = find(event.number("request"));
  const std::string name =
      "the bundle lent to the callback of " + (request ? nameOf(request->action) : "a request");
  if (event.name == "lent-bundle-freed") {
    add("lent-bundle-freed",
        name
            + " was freed by the application, which without the probe is a crash: the library "
              "frees it itself; take the bundle_free() out");
    return;
  }
  add("lent-bundle-used-late",
      name + " was used with " + event.text("function")
          + "() after the callback had returned, when its memory belongs to others; copy what is "
            "needed inside the callback, with bundle_dup() or strdup()");
}

void Findings::seeSignal(const Event &event) {
  const std::string action = event.text("action");
  const std::string name = event.text("name");
  if (event.has("exception")) {
    add("exception-from-callback",
        (action.empty() ? "an exception" : "an exception of the callback of " + nameOf(action))
            + ", " + exceptionIn(event)
            + ", was caught by nobody and ended the application; catch it inside the callback, and "
              "answer with what went wrong");
    return;
  }
  add("crashed",
      "the application crashed with " + name
          + (action.empty() ? " outside its callbacks" : " in the callback of " + nameOf(action))
          + "; run it in a debugger and send the same request");
}

void Findings::seeExit(const Event &event) {
  const Request *const request = find(_latest);
  if (request != nullptr && request->wasEntered && !request->isAnswered && !request->hasTimedOut
      && !request->isDeferred) {
    add("never-answered", "the application ended and left the request for "
                              + nameOf(request->action) + " unanswered, "
                              + seconds(age(request->received, event.time))
                              + " after it came; answer before ending");
  }
}

void Findings::seeLog(const Event &event) {
  const LogMeaning meaning = meaningOf(event);
  if (meaning.kind == LogKind::AllowList) {
    _allowList = meaning.detail;
  } else if (meaning.kind == LogKind::NotPermitted) {
    seeRefusal(meaning.detail);
  } else if (meaning.kind == LogKind::TimedOut) {
    seeTimeOut(event);
  }
}

void Findings::seeTimeOut(const Event &event) {
  Request *const request = find(_latest);
  if (request == nullptr) {
    return;
  }
  request->hasTimedOut = true;
  if (request->isDeferred) {
    return;
  }
  add("never-answered",
      "the request for " + nameOf(request->action) + " was not answered within "
          + seconds(age(request->received, event.time))
          + ", so the assistant was told that it timed out; every way through the callback has to "
            "lead to "
          + (request->isState ? "norix_complete_app_state_request()"
                              : "norix_complete_action_execution()"));
}

void Findings::seeRefusal(const std::string &sender) {
  for (const Finding &finding : checkAllowList(_allowList, sender)) {
    addOnce(finding.word, _allowList + "\n" + sender, finding.sentence);
  }
}

void Findings::add(const std::string &word, const std::string &sentence) {
  _found.push_back({word, sentence});
}

void Findings::addOnce(const std::string &word, const std::string &about,
                       const std::string &sentence) {
  if (_said.insert(word + "\n" + about).second) {
    add(word, sentence);
  }
}

Findings::Request *Findings::find(std::int64_t number) {
  const auto found = _requests.find(number);
  return found != _requests.end() ? &found->second : nullptr;
}

} // namespace norix::assistant::trace
