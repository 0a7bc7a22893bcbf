// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Chart.h"

#include "assistant/trace/Timeline.h"
#include "assistant/trace/logTexts.h"
#include "assistant/trace/names.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace norix::assistant::report {
namespace {

using trace::Event;

enum Lane : std::size_t { Assistant, Library, Application, Findings, LaneCount };

const std::vector<std::string> kLanes = {"assistant", "library", "application", "findings"};

Lane laneOf(const Event &event) {
  static const std::map<std::string, Lane> kOthers = {
      {"assistant", Assistant}, {"received", Library}, {"log", Library}, {"finding", Findings}};
  const auto found = kOthers.find(event.name);
  return found == kOthers.end() ? Application : found->second;
}

/// Something that has begun and not ended.
struct Begun {
  Lane lane;
  std::string key;
};

// What an event begins, and what it ends, by a key.
std::optional<Begun> beginningOf(const Event &event) {
  if (event.name == "received") {
    return Begun{Library, "library"};
  }
  if (event.name == "callback-entered") {
    return Begun{Application, "callback"};
  }
  if (event.name == "assistant" && event.text("step") == "sent") {
    return Begun{Assistant, "request " + event.text("requestId")};
  }
  return std::nullopt;
}

// Whether the library has done with the request: it was answered, by the application or by itself.
bool endsRequest(const Event &event) {
  if (event.name == "call") {
    return trace::isAnswer(event.text("function"));
  }
  const trace::LogKind kind =
      event.name == "log" ? trace::meaningOf(event).kind : trace::LogKind::Other;
  return kind == trace::LogKind::TimedOut || kind == trace::LogKind::NotRegistered;
}

std::string endedBy(const Event &event) {
  if (endsRequest(event)) {
    return "library";
  }
  if (event.name == "callback-left") {
    return "callback";
  }
  if (event.name == "assistant" && event.text("step") == "answered") {
    return "request " + event.text("requestId");
  }
  return {};
}

class Charting {
public:
  Chart draw(const std::vector<Event> &events) {
    if (events.empty()) {
      return {};
    }
    _chart.lanes = kLanes;
    _chart.begin = events.front().time;
    _chart.end = events.back().time;
    _timeline.setStart(_chart.begin);
    for (const Event &event : events) {
      see(event);
    }
    return withoutEmptyLanes();
  }

private:
  void see(const Event &event) {
    const std::optional<std::string> line = _timeline.line(event);
    end(endedBy(event), event.time);
    if (const std::optional<Begun> begun = beginningOf(event)) {
      // A newer request takes the place of an older one.
      end(begun->key, event.time);
      // What the end never comes for lasts until the end of the chart.
      _open[begun->key] = _chart.marks.size();
      _chart.marks.push_back({begun->lane, event.time, _chart.end, line.value_or(event.name)});
    } else if (line) {
      _chart.marks.push_back({laneOf(event), event.time, event.time, *line});
    }
  }

  void end(const std::string &key, std::uint64_t time) {
    const auto open = _open.find(key);
    if (open != _open.end()) {
      _chart.marks[open->second].end = time;
      _open.erase(open);
    }
  }

  Chart withoutEmptyLanes() {
    for (std::size_t lane = LaneCount; lane-- > 0;) {
      const bool isUsed = std::any_of(_chart.marks.begin(), _chart.marks.end(),
                                      [lane](const ChartMark &mark) { return mark.lane == lane; });
      if (!isUsed) {
        removeLane(lane);
      }
    }
    return std::move(_chart);
  }

  void removeLane(std::size_t removed) {
    _chart.lanes.erase(_chart.lanes.begin() + static_cast<std::ptrdiff_t>(removed));
    for (ChartMark &mark : _chart.marks) {
      mark.lane -= mark.lane > removed ? 1 : 0;
    }
  }

  Chart _chart;
  trace::Timeline _timeline;
  std::map<std::string, std::size_t> _open;
};

} // namespace

Chart chartOf(const std::vector<Event> &events) {
  return Charting().draw(events);
}

} // namespace norix::assistant::report
