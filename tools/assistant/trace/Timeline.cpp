// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/Timeline.h"

#include "assistant/trace/logTexts.h"
#include "assistant/trace/names.h"
#include "assistant/trace/utf8.h"
#include "assistant/trace/visible.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace norix::assistant::trace {
namespace {

constexpr double kNanosecondsPerMillisecond = 1e6;
constexpr std::size_t kLongestQuote = 120;

std::string milliseconds(std::uint64_t from, std::uint64_t to) {
  const double elapsed =
      to >= from ? static_cast<double>(to - from) : -static_cast<double>(from - to);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%9.1f ms  ", elapsed / kNanosecondsPerMillisecond);
  return text.data();
}

std::string duration(std::int64_t nanoseconds) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.1f ms",
                static_cast<double>(nanoseconds) / kNanosecondsPerMillisecond);
  return text.data();
}

std::string quoted(const std::string &text) {
  const bool isLong = text.size() > kLongestQuote;
  return visible(beginningOf(text, kLongestQuote)) + (isLong ? "…" : "");
}

} // namespace

std::optional<std::string> Timeline::line(const Event &event) {
  const std::string text = describe(event);
  if (text.empty()) {
    return std::nullopt;
  }
  const std::uint64_t start = _fixedStart ? *_fixedStart : _request.start;
  return milliseconds(start == 0 ? event.time : start, event.time) + text;
}

std::string Timeline::describe(const Event &event) {
  if (event.name == "hello") {
    return describeHello(event);
  }
  if (event.name == "received") {
    return describeReceived(event);
  }
  if (event.name == "callback-entered") {
    return describeEntered(event);
  }
  if (event.name == "callback-left") {
    return describeLeft(event);
  }
  if (event.name == "call") {
    return describeCall(event);
  }
  if (event.name == "log") {
    return describeLog(event);
  }
  return describeOwn(event);
}

std::string Timeline::describeHello(const Event &event) {
  if (_request.start == 0) {
    _request.start = event.time;
  }
  return "process " + std::to_string(event.number("pid"))
         + " began: " + visible(event.text("program"));
}

std::string Timeline::describeReceived(const Event &event) {
  _request = {event.text("action"), event.time, false};
  const std::string params = event.text("params");
  return "request " + event.text("requestId") + " for " + visible(_request.action)
         + (params.empty() ? std::string() : " " + quoted(params)) + " was received"
         + (_sender.empty() ? std::string() : " from " + visible(_sender)) + " and routed";
}

std::string Timeline::describeEntered(const Event &event) const {
  return "callback of " + visible(event.text("action")) + " was entered"
         + (event.flag("deferred") ? ", with a handle that cannot be answered: the request came "
                                     "before the registration"
                                   : "");
}

std::string Timeline::describeLeft(const Event &event) {
  const std::string callback = "callback of " + visible(event.text("action"));
  if (event.has("exception")) {
    return callback + " was left by an exception: " + visible(exceptionIn(event));
  }
  const std::string returned = callback + " returned after " + duration(event.number("held"));
  return _request.isAnswered
             ? returned
             : returned + " without an answer; the library waits until " + deadline();
}

std::string Timeline::describeCall(const Event &event) {
  const std::string function = event.text("function");
  if (function == "norix_initialize") {
    return describeInitialize(event);
  }
  if (isAnswer(function)) {
    return describeAnswer(event);
  }
  const std::string action = event.text("action");
  const std::string call =
      function + "(" + (action.empty() ? std::string() : visible(action)) + ")";
  const auto result = static_cast<int>(event.number("result"));
  return result == 0 ? call : call + " failed with " + resultName(result);
}

std::string Timeline::describeInitialize(const Event &event) {
  if (event.has("exception")) {
    return "norix_initialize() was left by an exception";
  }
  const auto result = static_cast<int>(event.number("result"));
  if (result != 0) {
    return "norix_initialize() failed with " + resultName(result);
  }
  constexpr std::uint64_t kPerMillisecond = 1000000;
  _waitNanoseconds =
      static_cast<std::uint64_t>(event.number("completionTimeout")) * kPerMillisecond;
  return "norix_initialize() succeeded: the application listens";
}

std::string Timeline::describeAnswer(const Event &event) {
  const auto result = static_cast<int>(event.number("result"));
  const std::string answer =
      event.has("text") ? "\"" + quoted(event.text("text")) + "\"" : "a null text";
  if (result != 0) {
    return "answer " + answer + " was refused with " + resultName(result);
  }
  _request.isAnswered = true;
  return "answered " + answer + " and handed to the channel";
}

std::string Timeline::describeLog(const Event &event) {
  const std::string text = event.text("text");
  const LogMeaning meaning = meaningOf(event);
  switch (meaning.kind) {
  case LogKind::Connected:
    return "'" + visible(meaning.detail) + "' connected";
  case LogKind::Sender:
    _sender = meaning.detail;
    return {};
  case LogKind::SetCallback:
    return "the assistant registered for answers";
  case LogKind::Disconnected:
    return "the assistant disconnected";
  case LogKind::NotPermitted:
    return "'" + visible(meaning.detail) + "' was refused by the allow list";
  case LogKind::Parked:
    return "no callback of " + visible(_request.action)
           + " is registered; the library waits 0.12 s for it";
  case LogKind::NotRegistered:
    return "still no callback; the library answers that none is registered";
  case LogKind::TimedOut:
    return "no answer in time; the library answers that the request timed out";
  case LogKind::NotDelivered:
    return "the response could not be delivered: the assistant that asked is gone";
  case LogKind::AllowList:
  case LogKind::Other:
    break;
  }
  return isLibrarysOwn(event) ? std::string()
                              : "log " + visible(event.text("tag")) + ": " + quoted(text);
}

std::string Timeline::describeOwn(const Event &event) const {
  const std::string action = visible(event.text("action"));
  if (event.name == "callback-held") {
    return "callback of " + action + " has held the main loop for "
           + duration(event.number("held"));
  }
  if (event.name == "loop-held") {
    return "the main loop has stood still for " + duration(event.number("held"))
           + ", outside the callbacks";
  }
  if (event.name == "lent-bundle-freed") {
    return "the application freed the bundle it was lent";
  }
  if (event.name == "lent-bundle-used") {
    return visible(event.text("function")) + "() used a lent bundle after its callback returned";
  }
  if (event.name == "signal") {
    return event.text("name") + (action.empty() ? "" : " in the callback of " + action);
  }
  if (event.name == "exit") {
    return "the application exits with status " + std::to_string(event.number("status"));
  }
  if (event.name == "dropped") {
    return std::to_string(event.number("count"))
           + " events were lost: the application made them faster than they were read";
  }
  if (event.name == "launched") {
    return visible(event.text("app")) + " is process " + std::to_string(event.number("pid"))
           + (event.flag("listens") ? ", which listens" : ", which does not listen");
  }
  if (event.name == "finding") {
    return "finding " + event.text("finding") + ": " + visible(event.text("sentence"));
  }
  // The assistant's side words its own events.
  return visible(event.text("says"));
}

std::string Timeline::deadline() const {
  return localTime(_request.start + _waitNanoseconds);
}

// The wall clock at a moment of the monotonic one.
std::string Timeline::localTime(std::uint64_t time) const {
  constexpr std::int64_t kNanoseconds = 1000000000;
  const auto ahead = static_cast<std::int64_t>(time) - static_cast<std::int64_t>(monotonicNow());
  timespec wall = {};
  clock_gettime(CLOCK_REALTIME, &wall);
  const std::time_t at =
      static_cast<std::time_t>((wall.tv_sec * kNanoseconds + wall.tv_nsec + ahead) / kNanoseconds);
  tm local = {};
  localtime_r(&at, &local);
  std::array<char, 16> text{};
  std::strftime(text.data(), text.size(), "%H:%M:%S", &local);
  return text.data();
}

std::vector<std::string> toLines(const std::vector<Event> &events) {
  Timeline timeline;
  if (!events.empty()) {
    timeline.setStart(events.front().time);
  }
  std::vector<std::string> lines;
  for (const Event &event : events) {
    if (const auto line = timeline.line(event)) {
      lines.push_back(*line);
    }
  }
  return lines;
}

} // namespace norix::assistant::trace
