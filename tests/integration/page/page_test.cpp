// SPDX-License-Identifier: Apache-2.0
//
// The report in HTML as a browser shows it.
#include "integration/harness/AssistantCommand.h"
#include "support/TemporaryRuntime.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char *kBrowser = "/usr/bin/chromium";
// It starts a dozen processes, on a machine that is busy with other tests.
constexpr double kLong = 100.0;
constexpr double kNanoseconds = 1e6;

constexpr const char *kScenarios[] = {
    "name: Passing <b>\n"
    "steps:\n"
    "- run: musicNext\n"
    "- burst: [{run: musicNext, expect: {outcome: superseded}}, {state: }]\n",
    "name: Failing\n"
    "steps:\n"
    "- run: musicVolume\n"
    "  params: {volume: 25}\n"
    "- run: musicVolume\n"
    "  params: {volume: 26}\n"
    "  expect: {text: The volume is 27}\n"
    "- run: musicPause\n"};

/// What the user prefers.
struct Scheme {
  const char *name;
  const char *option;
  bool isLight;
};

void PrintTo(const Scheme &scheme, std::ostream *out) {
  *out << scheme.name;
}

// A page as the browser has it after loading, with what was measured in it.
json measured(const std::string &page, const Scheme &scheme, std::string &said) {
  const support::TemporaryFolder profile;
  Process browser({kBrowser, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                   "--no-first-run", "--disable-background-networking",
                   "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
                   "--enable-logging=stderr", "--window-size=1000,800", scheme.option,
                   "--user-data-dir=" + profile.path(), "--dump-dom", "file://" + page});
  const std::string document = browser.readAll(kLong);
  (void)browser.wait(kLong);
  said = browser.errors();
  const std::string before = R"(<script type="application/json">)";
  const std::size_t begin = document.find(before);
  if (begin == std::string::npos) {
    return {};
  }
  const std::size_t end = document.find("</script>", begin);
  return json::parse(document.substr(begin + before.size(), end - begin - before.size()));
}

json stepsOf(const json &report) {
  json steps = json::array();
  for (const json &tried : report.at("cases")) {
    for (const json &step : tried.at("steps")) {
      steps.push_back(step);
    }
  }
  return steps;
}

/// A stretch of time, in milliseconds from the first event of its step.
using Stretch = std::pair<double, double>;

// From being sent to being answered; those that are never answered are left out.
std::vector<Stretch> exchangesOf(const json &step) {
  std::vector<Stretch> exchanges;
  const json &events = step.at("events");
  const auto timeOf = [&events](const json &event) {
    return (event.at("t").get<double>() - events.at(0).at("t").get<double>()) / kNanoseconds;
  };
  for (const json &sent : events) {
    for (const json &answered : events) {
      if (sent.value("step", "") == "sent" && answered.value("step", "") == "answered"
          && sent.at("requestId") == answered.at("requestId")) {
        exchanges.emplace_back(timeOf(sent), timeOf(answered));
      }
    }
  }
  return exchanges;
}

// Where the bars of a lane begin and end, by the axis that is drawn with them.
std::vector<Stretch> barsOf(const json &chart, const std::string &lane) {
  const json &first = chart.at("ticks").front();
  const json &last = chart.at("ticks").back();
  const double perPixel =
      (last.at("milliseconds").get<double>() - first.at("milliseconds").get<double>())
      / (last.at("x").get<double>() - first.at("x").get<double>());
  std::vector<Stretch> bars;
  for (const json &bar : chart.at("bars")) {
    if (bar.at("lane") == lane) {
      bars.emplace_back((bar.at("begin").get<double>() - first.at("x").get<double>()) * perPixel,
                        (bar.at("end").get<double>() - first.at("x").get<double>()) * perPixel);
    }
  }
  return bars;
}

constexpr Scheme kSchemes[] = {{"Light", "--blink-settings=preferredColorScheme=1", true},
                               {"Dark", "--blink-settings=preferredColorScheme=0", false}};

class ThePage : public testing::Test {
protected:
  void SetUp() override { show(kSchemes[0]); }

  void show(const Scheme &scheme) {
    if (!std::filesystem::exists(kBrowser)) {
      GTEST_SKIP() << kBrowser << " is not installed: nobody looks at the page";
    }
    const Outcome outcome =
        runAssistant({"test", runtime.write("passing.yaml", kScenarios[0]),
                      runtime.write("failing.yaml", kScenarios[1]), "--app", MUSIC_EXAMPLE,
                      "--json", "--html", runtime.write("page.html", "")});
    ASSERT_EQ(outcome.status, kFailed) << outcome.out << outcome.err;
    report = json::parse(outcome.out);
    std::string page = support::contentOf(runtime.write("x", "").parent_path() / "page.html");
    const std::string head = "<head>";
    page.insert(page.find(head) + head.size(),
                "<script>" + support::contentOf(MEASURING_SCRIPT) + "</script>");
    found = measured(runtime.write("page.html", page), scheme, said);
    ASSERT_FALSE(found.is_null()) << said;
  }

  support::TemporaryRuntime runtime;
  json report;
  json found;
  std::string said;
};

TEST_F(ThePage, ShowsEveryStepToScaleAndOpensFailures) {
  const json steps = stepsOf(report);
  ASSERT_EQ(found.at("steps").size(), steps.size());
  EXPECT_EQ(found.at("isOpen"), json({false, true}));
  EXPECT_EQ(found.at("failures"), json({"2 run musicVolume"}));
  int exchanges = 0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const json &shown = found.at("steps").at(i);
    EXPECT_EQ(shown.at("name"), steps[i].at("name"));
    EXPECT_EQ(shown.at("outcome"), steps[i].at("outcome"));
    const bool isFailed = steps[i].at("outcome") == "failed";
    EXPECT_EQ(!shown.at("messages").empty(), isFailed) << shown;
    EXPECT_EQ(!shown.at("events").empty(), isFailed) << shown;
    if (isFailed) {
      EXPECT_THAT(shown.at("messages").at(0),
                  AllOf(HasSubstr("-The volume is 27"), HasSubstr("+The volume is 26")));
    }
    for (const Stretch &exchange : exchangesOf(steps[i])) {
      // However short, a bar is drawn with a four-hundredth of the whole time.
      const json &chart = shown.at("chart");
      const double most = chart.at("ticks").back().at("milliseconds").get<double>() / 100;
      EXPECT_THAT(barsOf(chart, "assistant"),
                  testing::Contains(testing::Pair(testing::DoubleNear(exchange.first, most),
                                                  testing::DoubleNear(exchange.second, most))));
      ++exchanges;
    }
  }
  EXPECT_EQ(exchanges, 4);
}

TEST_F(ThePage, NeedsNothingElse) {
  EXPECT_THAT(found.at("requests"), IsEmpty());
  EXPECT_THAT(found.at("violations"), IsEmpty());
  EXPECT_THAT(said, Not(HasSubstr("CONSOLE")));
}

class ThePageIn : public ThePage, public testing::WithParamInterface<Scheme> {
protected:
  void SetUp() override { show(GetParam()); }
};

TEST_P(ThePageIn, ThePreferredSchemeIsReadable) {
  constexpr double kReadable = 4.5;
  constexpr double kBright = 0.8;
  constexpr double kDark = 0.1;

  const double brightness = found.at("brightness");
  EXPECT_TRUE(GetParam().isLight ? brightness > kBright : brightness < kDark) << brightness;
  EXPECT_THAT(found.at("contrast").get<double>(), Gt(kReadable));
  EXPECT_EQ(found.at("overflow"), 0);
}

INSTANTIATE_TEST_SUITE_P(Either, ThePageIn, testing::ValuesIn(kSchemes),
                         [](const auto &chosen) { return chosen.param.name; });

} // namespace
} // namespace integration
