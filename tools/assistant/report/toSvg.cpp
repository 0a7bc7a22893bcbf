// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Chart.h"
#include "assistant/report/markup.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>

namespace norix::assistant::report {
namespace {

// In the units of the drawing, which is scaled to the width of the page.
constexpr double kWidth = 960.0;
constexpr double kLeft = 100.0;
constexpr double kRight = 20.0;
constexpr double kAxis = 24.0;
constexpr double kLane = 30.0;
constexpr double kBar = 14.0;
constexpr double kNarrowest = 2.0;

constexpr double kPerMillisecond = 1e6;
constexpr std::size_t kMostTicks = 8;

std::string tickText(std::uint64_t time) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%g ms",
                      static_cast<double>(time) / kPerMillisecond);
  return text.data();
}

class Drawing {
public:
  explicit Drawing(const Chart &chart) : _chart(chart) {}

  std::string draw() {
    _svg << "<svg class=\"chart\" role=\"img\" aria-label=\"time line\" viewBox=\"0 0 " << kWidth
         << ' ' << height() << "\">";
    drawAxis();
    for (std::size_t lane = 0; lane < _chart.lanes.size(); ++lane) {
      _svg << "<text class=\"lane\" x=\"0\" y=\"" << middleOf(lane) + 4.0 << "\">"
           << escapeMarkup(_chart.lanes[lane]) << "</text>";
    }
    for (const ChartMark &mark : _chart.marks) {
      drawMark(mark);
    }
    _svg << "</svg>";
    return _svg.str();
  }

private:
  void drawAxis() {
    for (const std::uint64_t tick : ticksOf(duration())) {
      const double x = xOf(_chart.begin + tick);
      _svg << "<line class=\"tick\" x1=\"" << x << "\" x2=\"" << x << "\" y1=\"" << kAxis
           << "\" y2=\"" << height() << "\"/><text class=\"tick\" x=\"" << x << "\" y=\"14\">"
           << tickText(tick) << "</text>";
    }
  }

  void drawMark(const ChartMark &mark) {
    const double begin = xOf(mark.begin);
    const double y = middleOf(mark.lane);
    const std::string lane = escapeMarkup(_chart.lanes[mark.lane]);
    if (mark.begin == mark.end) {
      _svg << "<circle class=\"" << lane << "\" cx=\"" << begin << "\" cy=\"" << y << "\" r=\"4\">";
    } else {
      _svg << "<rect class=\"" << lane << "\" x=\"" << begin << "\" y=\"" << y - kBar / 2
           << "\" width=\"" << std::max(kNarrowest, xOf(mark.end) - begin) << "\" height=\"" << kBar
           << "\">";
    }
    _svg << "<title>" << escapeMarkup(mark.label) << "</title>"
         << (mark.begin == mark.end ? "</circle>" : "</rect>");
  }

  std::uint64_t duration() const { return _chart.end - _chart.begin; }
  double height() const { return kAxis + kLane * static_cast<double>(_chart.lanes.size()); }
  static double middleOf(std::size_t lane) {
    return kAxis + kLane * (static_cast<double>(lane) + 0.5);
  }
  double xOf(std::uint64_t time) const {
    const double part = duration() == 0 ? 0.0
                                        : static_cast<double>(time - _chart.begin)
                                              / static_cast<double>(duration());
    return kLeft + part * (kWidth - kLeft - kRight);
  }

  const Chart &_chart;
  std::ostringstream _svg;
};

} // namespace

std::vector<std::uint64_t> ticksOf(std::uint64_t duration) {
  std::vector<std::uint64_t> ticks;
  std::uint64_t decade = 1;
  std::uint64_t step = 1;
  for (std::size_t i = 0; duration / step >= kMostTicks; ++i) {
    constexpr std::array<std::uint64_t, 3> kSteps = {2, 5, 10};
    step = decade * kSteps[i % kSteps.size()];
    decade = i % kSteps.size() == kSteps.size() - 1 ? step : decade;
  }
  for (std::uint64_t tick = 0; tick <= duration; tick += step) {
    ticks.push_back(tick);
  }
  return ticks;
}

std::string toSvg(const Chart &chart) {
  return chart.lanes.empty() ? std::string() : Drawing(chart).draw();
}

} // namespace norix::assistant::report
