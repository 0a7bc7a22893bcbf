// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/ExchangeTrace.h"

#include "assistant/trace/logTexts.h"
#include "assistant/trace/names.h"

#include <algorithm>
#include <utility>

namespace norix::assistant::launch {
namespace {

using trace::Event;
using trace::LogKind;

constexpr std::uint64_t kNanoseconds = 1000000;
constexpr int kPause = 50;

/// Finds out when the application and the library have done with a request.
class Progress {
public:
  explicit Progress(std::string requestId) : _requestId(std::move(requestId)) {}

  void see(const Event &event) {
    _isReceived = _isReceived || event.text("requestId") == _requestId;
    if (!_isReceived) {
      return;
    }
    if (event.name == "call" && trace::isAnswer(event.text("function"))) {
      _isAnswered = true;
      _isDone = _isDone || !event.has("inside");
    }
    _isDone = _isDone || (event.name == "callback-left" && _isAnswered) || endsAnyway(event);
  }
  bool isDone() const { return _isDone; }

private:
  static bool endsAnyway(const Event &event) {
    const LogKind kind = event.name == "log" ? trace::meaningOf(event).kind : LogKind::Other;
    return event.name == "exit" || event.name == "signal" || kind == LogKind::NotRegistered
           || kind == LogKind::TimedOut;
  }

  std::string _requestId;
  bool _isReceived = false;
  bool _isAnswered = false;
  bool _isDone = false;
};

} // namespace

ExchangeTrace::ExchangeTrace(const std::string &appId) : _watch(Watch::open(appId)) {}

void ExchangeTrace::note(const std::string &says) {
  _events.push_back(trace::makeEvent("assistant", {{"says", says}}));
}

std::vector<Event> ExchangeTrace::finish(std::uint64_t requestId, int milliseconds) {
  if (_watch) {
    readUntilAnswered(std::to_string(requestId), milliseconds);
  }
  std::stable_sort(_events.begin(), _events.end(),
                   [](const Event &a, const Event &b) { return a.time < b.time; });
  return std::move(_events);
}

void ExchangeTrace::readUntilAnswered(const std::string &requestId, int milliseconds) {
  const std::uint64_t begin = _events.empty() ? 0 : _events.front().time;
  const std::uint64_t end =
      trace::monotonicNow() + static_cast<std::uint64_t>(milliseconds) * kNanoseconds;
  Progress progress(requestId);
  while (!progress.isDone() && !_watch->hasEnded() && trace::monotonicNow() < end) {
    for (Event &event : _watch->read(kPause)) {
      progress.see(event);
      // What came before is not this exchange's; launch's own greeting says nothing of it.
      if (event.time >= begin && event.name != "launched") {
        _events.push_back(std::move(event));
      }
    }
  }
}

} // namespace norix::assistant::launch
