// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Chart.h"
#include "examples.h"

#include <gmock/gmock.h>

#include <regex>

namespace norix::assistant::report {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kMillisecond = 1000000;

// The stretches of time in a lane: where each begins and how long it is, in milliseconds.
std::vector<std::pair<std::uint64_t, std::uint64_t>> stretchesIn(const Chart &chart,
                                                                 const std::string &lane) {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> found;
  for (const ChartMark &mark : chart.marks) {
    if (chart.lanes[mark.lane] == lane && mark.end != mark.begin) {
      found.emplace_back((mark.begin - chart.begin) / kMillisecond,
                         (mark.end - mark.begin) / kMillisecond);
    }
  }
  return found;
}

using Stretch = std::pair<std::uint64_t, std::uint64_t>;

TEST(AChart, HasALaneForEverySideThatDidSomething) {
  EXPECT_THAT(chartOf(exchange()).lanes,
              ElementsAre("assistant", "library", "application", "findings"));
  EXPECT_THAT(chartOf({eventAt(0, "assistant", {{"says", "waiting"}})}).lanes,
              ElementsAre("assistant"));
  EXPECT_TRUE(chartOf({}).lanes.empty());
}

TEST(AChart, ShowsHowLongARequestAndItsCallbackTook) {
  const Chart chart = chartOf(exchange());

  EXPECT_THAT(stretchesIn(chart, "assistant"), ElementsAre(Stretch{0, 20}));
  EXPECT_THAT(stretchesIn(chart, "library"), ElementsAre(Stretch{2, 14}));
  EXPECT_THAT(stretchesIn(chart, "application"), ElementsAre(Stretch{4, 10}));
}

TEST(AChart, LetsWhatNeverEndsLastUntilItsEnd) {
  std::vector<trace::Event> events = exchange();
  events.erase(events.begin() + 4); // The answer.

  EXPECT_THAT(stretchesIn(chartOf(events), "library"), ElementsAre(Stretch{2, 18}));
}

TEST(AChart, EndsARequestThatTheLibraryAnswersOrThatANewerOneReplaces) {
  const auto received = [](std::uint64_t milliseconds) {
    return eventAt(milliseconds, "received", {{"action", "musicSing"}, {"requestId", "7"}});
  };
  const auto timedOut =
      eventAt(9, "log",
              {{"tag", "NORIX-APPSDK"},
               {"function", "f"},
               {"text", "action execution timed out. Failed to execute action."}});

  EXPECT_THAT(stretchesIn(chartOf({received(0), received(4), timedOut, eventAt(12, "exit", {})}),
                          "library"),
              ElementsAre(Stretch{0, 4}, Stretch{4, 5}));
}

// The x of every element with this name and class, by a regular expression.
std::vector<double> numbersOf(const std::string &svg, const std::string &pattern) {
  const std::regex expression(pattern);
  std::vector<double> numbers;
  for (std::sregex_iterator at(svg.begin(), svg.end(), expression), end; at != end; ++at) {
    numbers.push_back(std::stod((*at)[1]));
  }
  return numbers;
}

TEST(ADrawing, IsToScale) {
  const std::string svg = toSvg(chartOf(exchange()));
  const auto width = [&svg](const std::string &lane) {
    return numbersOf(svg, "rect class=\"" + lane + "\"[^>]* width=\"([0-9.]+)\"").at(0);
  };

  EXPECT_NEAR(width("library") / width("assistant"), 14.0 / 20.0, 0.01);
  EXPECT_NEAR(width("application") / width("assistant"), 10.0 / 20.0, 0.01);
}

TEST(ADrawing, SaysOfEveryMarkWhatItIs) {
  EXPECT_THAT(toSvg(chartOf(exchange())), HasSubstr("held &lt;too&gt; long</title>"));
}

TEST(ADrawing, DrawsAMomentToo) {
  EXPECT_THAT(toSvg(chartOf({eventAt(3, "exit", {{"status", 0}})})), HasSubstr("<circle"));
}

TEST(AnAxis, HasRoundTimesAndNotTooMany) {
  EXPECT_THAT(ticksOf(20 * kMillisecond), ElementsAre(0, 5 * kMillisecond, 10 * kMillisecond,
                                                      15 * kMillisecond, 20 * kMillisecond));
  EXPECT_THAT(ticksOf(0), ElementsAre(0));
  for (std::uint64_t duration = 1; duration < 100000000000; duration = duration * 3 + 1) {
    EXPECT_LE(ticksOf(duration).size(), 8U) << duration;
    EXPECT_GE(ticksOf(duration).size(), 2U) << duration;
  }
}

} // namespace
} // namespace norix::assistant::report
