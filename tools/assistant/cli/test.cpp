// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"
#include "assistant/cli/Watchdog.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/parameters.h"
#include "assistant/cli/reportOptions.h"
#include "assistant/scenario/Changes.h"
#include "assistant/scenario/Pool.h"
#include "assistant/scenario/Runner.h"
#include "assistant/scenario/select.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <stdexcept>

namespace norix::assistant::cli {
namespace {

using report::Case;
using report::Suite;
using scenario::Scenario;

struct TestOptions {
  scenario::Selection selection;
  std::string application;
  std::vector<std::string> variables;
  ReportOptions reports;
  std::size_t jobs = 1;
  bool lists = false;
  bool bails = false;
  bool watches = false;
};

constexpr const char *kSuite = "norix-assistant test";

scenario::ReadOptions readOptionsOf(const TestOptions &options) {
  scenario::ReadOptions read;
  read.application = options.application;
  const Json values = Json::parse(toJsonObject(options.variables));
  for (const auto &[name, value] : values.items()) {
    read.variables[name] = value;
  }
  return read;
}

Suite newSuite() {
  Suite suite;
  suite.name = kSuite;
  suite.caseNoun = "scenario";
  suite.stepNoun = "step";
  return suite;
}

// What came of the repetitions of each scenario, for those of which not all passed.
std::vector<std::string> flakinessOf(const Suite &suite) {
  struct Tally {
    std::size_t all = 0;
    std::size_t failed = 0;
  };
  std::map<std::string, Tally> tallies;
  for (const Case &tried : suite.cases) {
    Tally &tally = tallies[tried.file];
    tally.all += tried.outcome() == report::Outcome::Skipped ? 0 : 1;
    tally.failed += report::isFailure(tried.outcome()) ? 1 : 0;
  }
  std::vector<std::string> lines;
  for (const auto &[file, tally] : tallies) {
    if (tally.failed > 0 && tally.all > 1) {
      lines.push_back(file + (tally.failed == tally.all ? " is broken" : " is flaky") + ": failed "
                      + std::to_string(tally.failed) + " of " + std::to_string(tally.all)
                      + " times");
    }
  }
  return lines;
}

/// One round: reads the files, plays what is selected, reports.
class Round {
public:
  Round(const TestOptions &options, Console &console) : _options(options), _console(console) {}

  Ending run() {
    const scenario::Loaded loaded = load();
    if (_options.lists && loaded.refused.empty()) {
      return listing(loaded.scenarios);
    }
    _begin = std::chrono::steady_clock::now();
    _reports = std::make_unique<Reports>(_options.reports, _console);
    return loaded.refused.empty() ? play(loaded.scenarios) : refuse(loaded);
  }

private:
  scenario::Loaded load() const {
    try {
      return scenario::load(_options.selection, readOptionsOf(_options));
    } catch (const std::invalid_argument &error) {
      throw UsageError(error.what());
    }
  }

  Ending play(const std::vector<Scenario> &scenarios) {
    Watchdog watchdog(_console);
    scenario::Pool pool(_options.jobs);
    watchdog.onEnd([&pool] { pool.abandon(); });
    pool.play(scenarios, [this](Case played) {
      const bool isFailure = report::isFailure(played.outcome());
      take(std::move(played));
      return !(isFailure && _options.bails);
    });
    finish();
    return endingOf();
  }

  // Nothing is played when a file cannot be used: what it tests would be missing without a word.
  Ending refuse(const scenario::Loaded &loaded) {
    std::string detail;
    for (const scenario::Refused &refused : loaded.refused) {
      detail += (detail.empty() ? "" : "\n") + refused.why;
      take(scenario::caseOf(refused));
    }
    for (const Scenario &scenario : loaded.scenarios) {
      take(scenario::notPlayed(scenario, report::Outcome::Skipped, "another file was refused"));
    }
    finish();
    Ending ending = endingWith(Outcome::FileRefused);
    ending.subject.detail = detail;
    return ending;
  }

  Ending listing(const std::vector<Scenario> &scenarios) const {
    Ending ending;
    Json list = Json::array();
    std::string text;
    for (const Scenario &scenario : scenarios) {
      text += (text.empty() ? "" : "\n") + scenario.file + ": " + scenario.name;
      list.push_back(
          {{"file", scenario.file}, {"name", scenario.name}, {"steps", scenario.steps.size()}});
    }
    ending.text = text;
    ending.facts = {{"scenarios", std::move(list)}};
    return ending;
  }

  void take(Case played) {
    for (const auto &writer : _reports->writers()) {
      writer->add(played);
    }
    _suite.cases.push_back(std::move(played));
  }

  void finish() {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - _begin;
    _suite.seconds = passed.count();
    for (const std::string &line : flakinessOf(_suite)) {
      _console.say(line);
    }
    for (const auto &writer : _reports->writers()) {
      writer->end(_suite);
    }
    _reports->finish();
  }

  Ending endingOf() const {
    const auto failed = std::count_if(_suite.cases.begin(), _suite.cases.end(),
                                      [](const Case &c) { return report::isFailure(c.outcome()); });
    const std::string unstarted = whyNoneStarted();
    Ending ending = endingWith(failed == 0         ? Outcome::Answered
                               : unstarted.empty() ? Outcome::TestsFailed
                                                   : Outcome::CannotLaunch);
    ending.subject.detail = unstarted.empty()
                                ? std::to_string(failed) + " of "
                                      + std::to_string(_suite.cases.size()) + " scenarios failed"
                                : unstarted;
    return ending;
  }

  // Why the first application did not start, if nothing else went wrong.
  std::string whyNoneStarted() const {
    std::string why;
    for (const Case &tried : _suite.cases) {
      const report::Step &start = tried.steps.front();
      if (start.outcome == report::Outcome::Broken && why.empty()) {
        why = start.messages.front().text;
      } else if (report::isFailure(tried.outcome()) && start.outcome == report::Outcome::Passed) {
        return {};
      }
    }
    return why;
  }

  Ending endingWith(Outcome outcome) const {
    Ending ending;
    ending.outcome = outcome;
    // The report in JSON has said it all.
    if (_console.isJson()) {
      ending.status = rowOf(outcome).status;
    }
    return ending;
  }

  const TestOptions &_options;
  Console &_console;
  std::unique_ptr<Reports> _reports;
  std::chrono::steady_clock::time_point _begin;
  Suite _suite = newSuite();
};

// Again whenever a scenario or the application has changed; Ctrl-C ends it.
[[noreturn]] void watch(const TestOptions &options, Console &console) {
  // A signal that comes between two watchdogs waits for the next.
  Watchdog::blockSignals();
  while (true) {
    scenario::Changes changes;
    changes.add(options.selection.paths, options.application);
    try {
      (void)console.end(Round(options, console).run());
    } catch (const UsageError &error) {
      console.say(error.what());
    }
    const Watchdog watchdog(console);
    console.say("waiting for a change; Ctrl-C ends this");
    changes.await();
  }
}

Ending test(const TestOptions &options, Console &console) {
  if (options.watches) {
    watch(options, console);
  }
  return Round(options, console).run();
}

void addSelection(CLI::App &command, scenario::Selection &selection) {
  command
      .add_option("FILE|DIR", selection.paths,
                  "Scenarios; of a folder, all the files *.yaml and *.yml in it")
      ->required();
  command
      .add_option("--filter", selection.filter,
                  "Only scenarios whose file or name matches a regular expression (RE2)")
      ->type_name("EXPRESSION");
  command.add_option("--repeat", selection.repeat, "Plays everything so many times")
      ->type_name("N")
      ->check(CLI::Range(1, 10000));
  command
      .add_option("--shard", selection.shard,
                  "Plays the I-th of N parts, to divide scenarios among machines")
      ->type_name("I/N");
}

} // namespace

void addTest(Program &program) {
  auto options = std::make_shared<TestOptions>();
  CLI::App &command = program.add(
      "test", "Plays scenarios: has an application do things, and compares what comes of it",
      {"norix-assistant test examples/music/scenarios --app build/dev/examples/music",
       "norix-assistant test scenarios --jobs 4 --junit report.xml --html report.html"},
      [options](Console &console) { return test(*options, console); });
  addSelection(command, options->selection);
  command
      .add_option("--app", options->application,
                  "The application's folder, instead of the one that the scenario names")
      ->type_name("FOLDER");
  command.add_option("--set", options->variables, "A value for ${NAME} in the scenarios")
      ->type_name("NAME=VALUE")
      ->take_all()
      ->expected(1);
  command.add_flag("--list", options->lists, "Lists the scenarios, and plays none");
  command.add_flag("--bail", options->bails, "Starts no more after one that failed");
  command.add_option("--jobs", options->jobs, "Plays so many at once")
      ->type_name("N")
      ->check(CLI::Range(1, 1000));
  command.add_flag("--watch", options->watches,
                   "Plays them again whenever a scenario or the application changes");
  addReportOptions(command, options->reports);
}

} // namespace norix::assistant::cli
