// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Chart.h"
#include "assistant/report/Writer.h"
#include "assistant/report/markup.h"
#include "assistant/report/pageStyle.h"
#include "assistant/report/texts.h"
#include "assistant/trace/Timeline.h"

#include <array>
#include <cstdio>

namespace norix::assistant::report {
namespace {

// Nothing is fetched and nothing runs, whatever an application has sent; not even an icon is asked
// for by a browser that gets the page from a server.
constexpr const char *kHead =
    "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
    "style-src 'unsafe-inline'; img-src data:\">"
    "<meta name=\"viewport\" content=\"width=device-width\"><link rel=\"icon\" href=\"data:,\">";

// Longer outputs are folded away.
constexpr std::size_t kLongOutput = 12;

std::string durationText(double seconds) {
  constexpr double kMilliseconds = 1000.0;
  constexpr double kShort = 0.01;
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(),
                      seconds >= 1.0      ? "%.2f s"
                      : seconds >= kShort ? "%.0f ms"
                                          : "%.1f ms",
                      seconds >= 1.0 ? seconds : seconds * kMilliseconds);
  return text.data();
}

std::string span(const char *kind, const std::string &text) {
  return "<span class=\"" + std::string(kind) + "\">" + escapeMarkup(text) + "</span>";
}

// Lines of a difference: what came, and what was expected instead.
std::string markDifference(const std::string &detail) {
  std::string marked;
  for (const std::string &line : linesOf(detail)) {
    const char *const kind = line[0] == '+' ? "came" : line[0] == '-' ? "missed" : nullptr;
    marked += (kind == nullptr ? escapeMarkup(line) : span(kind, line)) + "\n";
  }
  return marked;
}

class HtmlWriter : public Writer {
public:
  explicit HtmlWriter(std::ostream &out) : _out(out) {}

  void add(const Case & /*tried*/) override {}
  void end(const Suite &suite) override {
    addHead(suite);
    addProperties(suite.properties);
    addFailures(suite);
    for (std::size_t i = 0; i < suite.cases.size(); ++i) {
      addCase(suite.cases[i], i);
    }
    _out << "</body></html>\n";
    _out.flush();
  }

private:
  // What links lead to.
  static std::string idOf(std::size_t number, std::size_t step) {
    return "case" + std::to_string(number + 1) + "-" + std::to_string(step + 1);
  }

  void addHead(const Suite &suite) {
    const std::string outcome = wordOf(suite.outcome());
    _out << kHead << "<title>" << escapeMarkup(suite.name) << ": " << outcome << "</title><style>"
         << kPageStyle << "</style></head>\n<body><h1 class=\"" << outcome << "\">"
         << escapeMarkup(suite.name) << ": " << span("outcome", outcome) << "</h1>\n<p>"
         << escapeMarkup(countsText(suite.countCases(), suite.caseNoun)) << "; "
         << escapeMarkup(countsText(suite.countSteps(), suite.stepNoun)) << "; "
         << durationText(suite.seconds) << "</p>\n<div class=\"share\">";
    const Counts counts = suite.countSteps();
    for (std::size_t i = counts.size(); i-- > 0;) {
      if (counts[i] > 0) {
        _out << "<span class=\"" << wordOf(static_cast<Outcome>(i))
             << "\" style=\"flex-grow:" << counts[i] << "\"></span>";
      }
    }
    _out << "</div>\n";
  }

  // The way to them in a long page.
  void addFailures(const Suite &suite) {
    if (!isFailure(suite.outcome())) {
      return;
    }
    _out << "<h2>What failed</h2>\n<ul class=\"failures\">\n";
    for (std::size_t i = 0; i < suite.cases.size(); ++i) {
      const Case &tried = suite.cases[i];
      for (std::size_t step = 0; step < tried.steps.size(); ++step) {
        if (isFailure(tried.steps[step].outcome)) {
          _out << "<li><a href=\"#" << idOf(i, step) << "\">" << escapeMarkup(tried.name) << ": "
               << escapeMarkup(tried.steps[step].name) << "</a></li>\n";
        }
      }
    }
    _out << "</ul>\n";
  }

  void addCase(const Case &tried, std::size_t number) {
    begin("case", "", tried.outcome());
    summarize(tried.outcome(), tried.name, tried.file, tried.seconds);
    addProperties(tried.properties);
    for (std::size_t i = 0; i < tried.steps.size(); ++i) {
      addStep(tried.steps[i], idOf(number, i));
    }
    _out << "</details>\n";
  }

  void addStep(const Step &step, const std::string &id) {
    begin("step", " id=\"" + id + "\"", step.outcome);
    summarize(step.outcome, step.name, step.line > 0 ? "line " + std::to_string(step.line) : "",
              step.seconds);
    addProperties(step.properties);
    for (const Message &message : step.messages) {
      _out << "<pre class=\"message\">" << escapeMarkup(message.text) << "\n"
           << markDifference(message.detail) << "</pre>\n";
    }
    addOutput(step.output);
    addEvents(step.events);
    _out << "</details>\n";
  }

  // What did not pass is seen at once.
  void begin(const char *kind, const std::string &attributes, Outcome outcome) {
    _out << "<details class=\"" << kind << ' ' << wordOf(outcome) << '"' << attributes
         << (isFailure(outcome) ? " open" : "") << '>';
  }

  void summarize(Outcome outcome, const std::string &name, const std::string &place,
                 double seconds) {
    _out << "<summary>" << span("outcome", wordOf(outcome)) << span("name", name)
         << span("place", place)
         << span("seconds", outcome == Outcome::Skipped ? "" : durationText(seconds))
         << "</summary>\n";
  }

  void addOutput(const std::string &output) {
    const std::size_t lines = linesOf(output).size();
    if (lines == 0) {
      return;
    }
    _out << "<details class=\"output\"" << (lines <= kLongOutput ? " open" : "")
         << "><summary>output" << (lines > 1 ? ", " + std::to_string(lines) + " lines" : "")
         << "</summary><pre>" << escapeMarkup(output) << "</pre></details>\n";
  }

  void addEvents(const std::vector<trace::Event> &events) {
    if (events.empty()) {
      return;
    }
    _out << toSvg(chartOf(events)) << "\n<div class=\"events\">";
    for (const std::string &line : trace::toLines(events)) {
      _out << "<div>" << escapeMarkup(line) << "</div>";
    }
    _out << "</div>\n";
  }

  void addProperties(const Properties &properties) {
    for (const auto &[name, value] : properties) {
      _out << "<div>" << span("faint", name + ":") << ' ' << escapeMarkup(value) << "</div>\n";
    }
  }

  std::ostream &_out;
};

} // namespace

std::unique_ptr<Writer> makeHtmlWriter(std::ostream &out) {
  return std::make_unique<HtmlWriter>(out);
}

} // namespace norix::assistant::report
