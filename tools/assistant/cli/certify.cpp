// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Certification.h"
#include "assistant/certify/Examination.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/Watchdog.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/cli/reportOptions.h"
#include "assistant/client/MainLoop.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>

namespace norix::assistant::cli {
namespace {

struct CertifyOptions {
  certify::Order order;
  std::vector<std::string> checks;
  std::string baseline;
  bool isStrict = false;
  bool lists = false;
  ReportOptions reports;
};

constexpr const char *kSender = "com.valtren.tizen.norix";

Ending listChecks() {
  Ending ending;
  ending.text = "";
  ending.facts["checks"] = Json::array();
  for (const certify::Check &check : certify::catalogue()) {
    *ending.text += (ending.text->empty() ? "" : "\n") + std::string(check.id) + "  "
                    + wordOf(check.level) + "  " + check.title;
    ending.facts["checks"].push_back({{"id", check.id},
                                      {"level", wordOf(check.level)},
                                      {"chapter", check.chapter},
                                      {"title", check.title},
                                      {"why", check.why},
                                      {"mend", check.mend}});
  }
  return ending;
}

/// "certify: check 12 of 37, parameters-huge; 9 s left", on a terminal.
class ProgressLine {
public:
  ProgressLine(Console &console, const Watchdog &watchdog)
      : _console(console), _watchdog(watchdog) {}

  void show(const certify::Progress &progress) {
    if (progress.ofHowMany == 0) {
      _console.showProgress({});
      return;
    }
    std::string line = "check " + std::to_string(progress.check) + " of "
                       + std::to_string(progress.ofHowMany) + ", " + progress.id;
    const auto done = static_cast<double>(progress.check - 1);
    if (done > 0.0) {
      const double left = _watchdog.secondsPassed() / done
                          * static_cast<double>(progress.ofHowMany - progress.check + 1);
      line += ": some " + std::to_string(static_cast<long>(std::ceil(left))) + " s left";
    }
    _console.showProgress(line);
  }

private:
  Console &_console;
  const Watchdog &_watchdog;
};

Ending endingOf(const report::Suite &suite, const CertifyOptions &options, const Console &console) {
  const report::Counts counts = suite.countSteps();
  Ending ending;
  ending.outcome = report::isFailure(suite.outcome()) ? Outcome::Findings : Outcome::Answered;
  if (ending.outcome == Outcome::Findings) {
    const std::size_t failures = counts[static_cast<std::size_t>(report::Outcome::Failed)]
                                 + counts[static_cast<std::size_t>(report::Outcome::Broken)];
    console.say("'" + options.order.application + "' is not certified: " + std::to_string(failures)
                + (failures == 1 ? " failure" : " failures"));
  } else {
    console.say("'" + options.order.application + "' is certified");
  }
  // The report has said it all.
  ending.status = rowOf(ending.outcome).status;
  return ending;
}

Ending certifyApplication(const CertifyOptions &options, Console &console) {
  setenv("AUL_APPID", kSender, 1);
  setenv("DLOG_FILTER", "*:S", 0);
  certify::Rules rules;
  rules.checks = options.checks;
  rules.isStrict = options.isStrict;
  if (!options.baseline.empty()) {
    rules.baseline = certify::Baseline::read(options.baseline);
  }
  Reports reports(options.reports, console);

  Watchdog watchdog(console);
  std::optional<certify::Examination> examination;
  std::mutex making;
  // Never given back: nothing is made any more.
  watchdog.onEnd([&] {
    making.lock();
    if (examination) {
      examination->abandon();
    }
  });
  const MainLoop loop;
  Watchdog::blockSignals();
  {
    const std::lock_guard<std::mutex> lock(making);
    examination.emplace(options.order);
  }
  ProgressLine line(console, watchdog);
  certify::Certification certification(
      *examination, std::move(rules),
      [&line](const certify::Progress &progress) { line.show(progress); });
  const report::Suite suite = certification.run(reports.writers());
  watchdog.finish();
  reports.finish();
  return endingOf(suite, options, console);
}

Ending run(const CertifyOptions &options, Console &console) {
  if (options.lists) {
    return listChecks();
  }
  if (options.order.application.empty()) {
    throw UsageError("give the application's folder, or its id");
  }
  try {
    return certifyApplication(options, console);
  } catch (const certify::BaselineError &error) {
    throw UsageError(error.what());
  }
}

std::string checkId(const std::string &id) {
  return certify::findCheck(id) != nullptr
             ? ""
             : "there is no check '" + id + "'; norix-assistant certify --list names them all";
}

} // namespace

void addCertify(Program &program) {
  auto options = std::make_shared<CertifyOptions>();
  CLI::App &command =
      program.add("certify", "Checks whether an application does what an assistant expects of it",
                  {"norix-assistant certify build/dev/examples/light",
                   "norix-assistant certify build/dev/examples/music --baseline "
                   "examples/music/certify.baseline "
                   "--junit certificate.xml",
                   "norix-assistant certify --list"},
                  [options](Console &console) { return run(*options, console); });
  certify::Order &order = options->order;
  command.add_option("FOLDER|APP", order.application, "The application's folder, or its app id");
  command.add_option("--check", options->checks, "Do this check only; may be repeated")
      ->type_name("ID")
      ->take_all()
      ->expected(1)
      ->check(checkId, "");
  command.add_flag("--list", options->lists, "Print the catalogue of checks");
  command.add_option("--baseline", options->baseline, "A file of failures that are accepted")
      ->type_name("FILE");
  command.add_flag("--strict", options->isStrict, "What an application should do counts as well");
  command.add_flag("--destructive", order.executesDestructive,
                   "Execute actions that are declared as destructive, too");
  command.add_option("--seed", order.seed, "For what is drawn by lot")
      ->type_name("NUMBER")
      ->capture_default_str();
  command
      .add_option("--save", order.folderForScenarios,
                  "Where to save scenarios of parameters that are not coped with")
      ->type_name("FOLDER")
      ->capture_default_str();
  command
      .add_option("--completion-timeout", order.completionTimeout,
                  "After how long the library gives up waiting for an answer, instead of 30")
      ->type_name("SECONDS")
      ->check(checkSeconds, "")
      ->capture_default_str();
  addReportOptions(command, options->reports);
  command.add_option("ARGUMENT", order.arguments, "Passed on to the application; after --");
}

} // namespace norix::assistant::cli
