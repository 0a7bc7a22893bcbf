// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Chart.h"
#include "assistant/report/Writer.h"
#include "assistant/report/markup.h"
#include "assistant/report/texts.h"
#include "assistant/trace/Timeline.h"

namespace norix::assistant::report {
namespace {

constexpr const char *kStyle = R"(
:root { color-scheme: light dark; --good: #1a7f37; --bad: #cf222e; --open: #9a6700;
  --faint: #6e7781; --line: #d0d7de; --assistant: #0969da; --library: #8250df;
  --application: #1a7f37; --findings: #cf222e; }
@media (prefers-color-scheme: dark) { :root { --good: #3fb950; --bad: #f85149; --open: #d29922;
  --faint: #8b949e; --line: #30363d; --assistant: #58a6ff; --library: #bc8cff;
  --application: #3fb950; --findings: #f85149; } }
body { font: 15px/1.5 system-ui, sans-serif; max-width: 64rem; margin: 2rem auto; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin-bottom: 0; }
details { border: 1px solid var(--line); border-radius: 6px; margin: .5rem 0; padding: .4rem .8rem; }
details details { border-width: 0 0 0 3px; border-radius: 0; margin: .3rem 0; }
summary { cursor: pointer; }
.file, .seconds, .line { color: var(--faint); font-size: .85em; }
.outcome { font-weight: 600; }
.passed > summary .outcome { color: var(--good); }
.failed > summary .outcome, .error > summary .outcome { color: var(--bad); }
.tolerated > summary .outcome, .skipped > summary .outcome { color: var(--open); }
pre { background: color-mix(in srgb, var(--line) 35%, transparent); border-radius: 6px;
  overflow-x: auto; padding: .6rem; white-space: pre-wrap; word-break: break-word; }
svg.chart { display: block; margin: .6rem 0; width: 100%; }
svg text { fill: currentColor; font-size: 12px; }
svg text.tick { fill: var(--faint); text-anchor: middle; }
svg line.tick { stroke: var(--line); }
svg .assistant { fill: var(--assistant); } svg .library { fill: var(--library); }
svg .application { fill: var(--application); } svg .findings { fill: var(--findings); }
svg rect { opacity: .55; }
)";

class HtmlWriter : public Writer {
public:
  explicit HtmlWriter(std::ostream &out) : _out(out) {}

  void add(const Case & /*tried*/) override {}
  void end(const Suite &suite) override {
    const std::string title = escapeMarkup(suite.name);
    _out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
         << "<meta name=\"viewport\" content=\"width=device-width\"><title>" << title << ": "
         << wordOf(suite.outcome()) << "</title><style>" << kStyle << "</style></head>\n<body><h1>"
         << title << ": " << wordOf(suite.outcome()) << "</h1>\n<p>"
         << escapeMarkup(countsText(suite.countCases(), suite.caseNoun)) << "; "
         << escapeMarkup(countsText(suite.countSteps(), suite.stepNoun)) << "; "
         << secondsText(suite.seconds) << "</p>\n";
    addProperties(suite.properties);
    for (const Case &tried : suite.cases) {
      addCase(tried);
    }
    _out << "</body></html>\n";
    _out.flush();
  }

private:
  void addCase(const Case &tried) {
    begin(tried.outcome(), tried.name, tried.file, tried.seconds);
    addProperties(tried.properties);
    for (const Step &step : tried.steps) {
      addStep(step);
    }
    _out << "</details>\n";
  }

  void addStep(const Step &step) {
    begin(step.outcome, step.name, step.line > 0 ? "line " + std::to_string(step.line) : "",
          step.seconds);
    addProperties(step.properties);
    std::string messages;
    for (const Message &message : step.messages) {
      messages += message.text + "\n" + message.detail + (message.detail.empty() ? "" : "\n");
    }
    addBlock(messages);
    addBlock(step.output);
    if (!step.events.empty()) {
      _out << toSvg(chartOf(step.events)) << '\n';
      std::string lines;
      for (const std::string &line : trace::toLines(step.events)) {
        lines += line + "\n";
      }
      addBlock(lines);
    }
    _out << "</details>\n";
  }

  // What did not pass is seen at once.
  void begin(Outcome outcome, const std::string &name, const std::string &place, double seconds) {
    _out << "<details class=\"" << wordOf(outcome) << '"' << (isFailure(outcome) ? " open" : "")
         << "><summary><span class=\"outcome\">" << wordOf(outcome) << "</span> "
         << escapeMarkup(name) << " <span class=\"file\">" << escapeMarkup(place)
         << "</span> <span class=\"seconds\">" << secondsText(seconds) << "</span></summary>\n";
  }

  void addBlock(const std::string &text) {
    if (!text.empty()) {
      _out << "<pre>" << escapeMarkup(text) << "</pre>\n";
    }
  }

  void addProperties(const Properties &properties) {
    for (const auto &[name, value] : properties) {
      _out << "<div><span class=\"line\">" << escapeMarkup(name) << ":</span> "
           << escapeMarkup(value) << "</div>\n";
    }
  }

  std::ostream &_out;
};

} // namespace

std::unique_ptr<Writer> makeHtmlWriter(std::ostream &out) {
  return std::make_unique<HtmlWriter>(out);
}

} // namespace norix::assistant::report
