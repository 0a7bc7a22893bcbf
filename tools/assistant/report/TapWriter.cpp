// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Writer.h"
#include "assistant/report/texts.h"
#include "assistant/trace/visible.h"

#include <nlohmann/json.hpp>

namespace norix::assistant::report {
namespace {

constexpr const char *kIndent = "    ";

// A '#' would begin a directive, a backslash escapes.
std::string described(const std::string &text) {
  std::string escaped;
  for (const char character : trace::visible(text)) {
    if (character == '#' || character == '\\') {
      escaped += '\\';
    }
    escaped += character;
  }
  return escaped;
}

// What TAP says behind a point that does not simply pass or fail.
std::string directiveOf(const Step &step) {
  const std::string why = step.messages.empty() ? "" : " " + described(step.messages.front().text);
  switch (step.outcome) {
  case Outcome::Skipped:
    return " # SKIP" + why;
  case Outcome::Tolerated:
    return " # TODO" + why;
  default:
    return {};
  }
}

bool isOk(Outcome outcome) {
  return outcome == Outcome::Passed || outcome == Outcome::Skipped;
}

// A text in YAML: a JSON string is one. visibleLines() leaves valid UTF-8 alone.
std::string quoted(const std::string &text) {
  return nlohmann::json(trace::visibleLines(text)).dump();
}

class TapWriter : public Writer {
public:
  explicit TapWriter(std::ostream &out) : _out(out) { _out << "TAP version 14\n"; }

  void add(const Case &tried) override {
    _out << "# Subtest: " << described(tried.name) << '\n';
    _out << kIndent << "1.." << tried.steps.size() << '\n';
    std::size_t number = 0;
    for (const Step &step : tried.steps) {
      point(++number, step);
      if (isFailure(step.outcome) || step.outcome == Outcome::Tolerated) {
        explain(tried, step);
      }
    }
    // A case passes when nothing in it counts as a failure.
    _out << (isFailure(tried.outcome()) ? "not ok " : "ok ") << ++_cases << " - "
         << described(tried.name);
    _out << (tried.outcome() == Outcome::Skipped ? " # SKIP\n" : "\n");
    _out.flush();
  }

  void end(const Suite & /*suite*/) override {
    _out << "1.." << _cases << '\n';
    _out.flush();
  }

private:
  void point(std::size_t number, const Step &step) {
    _out << kIndent << (isOk(step.outcome) ? "ok " : "not ok ") << number << " - "
         << described(step.name) << directiveOf(step) << '\n';
  }

  void explain(const Case &tried, const Step &step) {
    const std::string indent = std::string(kIndent) + "  ";
    _out << indent << "---\n" << indent << "outcome: " << wordOf(step.outcome) << '\n';
    _out << indent << "duration_ms: " << step.seconds * 1000.0 << '\n';
    if (step.line > 0) {
      _out << indent << "at: " << quoted(tried.file + ":" + std::to_string(step.line)) << '\n';
    }
    _out << indent << "message: |2\n";
    for (const std::string &line : explanationOf(step)) {
      _out << indent << "  " << line << '\n';
    }
    _out << indent << "...\n";
  }

  std::ostream &_out;
  std::size_t _cases = 0;
};

} // namespace

std::unique_ptr<Writer> makeTapWriter(std::ostream &out) {
  return std::make_unique<TapWriter>(out);
}

} // namespace norix::assistant::report
