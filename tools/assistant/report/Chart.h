// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_CHART_H
#define NORIX_ASSISTANT_REPORT_CHART_H

#include "assistant/trace/Event.h"

#include <string>
#include <vector>

namespace norix::assistant::report {

/// Something to draw in a lane of a time line: a moment, or a stretch of time.
struct ChartMark {
  std::size_t lane = 0;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  std::string label;
};

/// A time line to draw: lanes, from the top, with what happened in each.
struct Chart {
  std::vector<std::string> lanes;
  std::vector<ChartMark> marks;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

/// What there is to draw of events that are in order: requests from being sent to being answered on
/// the assistant's side, from being received to being answered in the library, and callbacks from
/// being entered to being left; the rest as moments.
Chart chartOf(const std::vector<trace::Event> &events);

/// The chart as an SVG element whose horizontal scale is time.
std::string toSvg(const Chart &chart);

/// Round times between 0 and a duration, in nanoseconds, for the marks of an axis: at most eight.
std::vector<std::uint64_t> ticksOf(std::uint64_t duration);

} // namespace norix::assistant::report

#endif
