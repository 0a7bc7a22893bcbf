// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Writer.h"
#include "assistant/report/texts.h"
#include "assistant/trace/visible.h"

namespace norix::assistant::report {
namespace {

constexpr const char *kEndOfColour = "\033[0m";

struct Mark {
  const char *sign;
  const char *colour;
};

Mark markOf(Outcome outcome) {
  switch (outcome) {
  case Outcome::Passed:
    return {"✓", "\033[32m"};
  case Outcome::Failed:
  case Outcome::Broken:
    return {"✗", "\033[31m"};
  case Outcome::Tolerated:
    return {"~", "\033[33m"};
  case Outcome::Skipped:
    break;
  }
  return {"-", "\033[2m"};
}

class PeopleWriter : public Writer {
public:
  PeopleWriter(std::ostream &out, bool hasColours) : _out(out), _hasColours(hasColours) {}

  void add(const Case &tried) override {
    _out << marked(tried.outcome()) << ' ' << titleOf(tried) << "  " << secondsText(tried.seconds)
         << '\n';
    // A case that did what it should needs no more words.
    if (tried.outcome() != Outcome::Passed) {
      for (const Step &step : tried.steps) {
        add(tried, step);
      }
    }
    _out.flush();
  }

  void end(const Suite &suite) override {
    _out << countsText(suite.countCases(), suite.caseNoun) << "; "
         << countsText(suite.countSteps(), suite.stepNoun) << "; " << secondsText(suite.seconds)
         << '\n';
    _out.flush();
  }

private:
  void add(const Case &tried, const Step &step) {
    _out << "  " << marked(step.outcome) << ' ' << trace::visible(step.name);
    const bool hasPassed = step.outcome == Outcome::Passed;
    if (step.line > 0 && !hasPassed) {
      _out << "  " << trace::visible(tried.file) << ':' << step.line;
    }
    _out << '\n';
    if (!hasPassed) {
      for (const std::string &line : explanationOf(step)) {
        _out << "      " << line << '\n';
      }
    }
  }

  std::string marked(Outcome outcome) const {
    const Mark mark = markOf(outcome);
    return _hasColours ? mark.colour + std::string(mark.sign) + kEndOfColour : mark.sign;
  }

  std::ostream &_out;
  bool _hasColours;
};

} // namespace

std::unique_ptr<Writer> makePeopleWriter(std::ostream &out, bool hasColours) {
  return std::make_unique<PeopleWriter>(out, hasColours);
}

} // namespace norix::assistant::report
