// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/launch/Background.h"
#include "assistant/launch/Supervisor.h"
#include "assistant/launch/exitStatus.h"

#include <memory>
#include <sys/wait.h>

namespace norix::assistant::cli {
namespace {

using launch::LaunchError;
using launch::LaunchOptions;
using launch::Target;

// What shells add to the number of a signal.

struct Options {
  LaunchOptions launch;
  bool stops = false;
};

int statusOf(const launch::Ending &ending, const Options &options) {
  if (options.launch.isStrict && ending.findings > 0) {
    return rowOf(Outcome::Findings).status;
  }
  // A signal for this process is passed on: the application decides how it ends.
  const int status = launch::exitStatus(ending.status);
  return status == 0 && ending.neverListened ? rowOf(Outcome::CannotLaunch).status : status;
}

// The status is the application's, and what there was to say has been said.
Ending endingOf(const launch::Ending &ended, const Options &options, const Console &console) {
  Ending ending;
  ending.status = statusOf(ended, options);
  if (console.isJson()) {
    (void)console.print(
        Json{{"event", "ended"}, {"status", *ending.status}, {"findings", ended.findings}});
  }
  if (WIFSIGNALED(ended.status) && ended.signal == 0) {
    console.say("the application was ended by signal " + std::to_string(WTERMSIG(ended.status)));
  }
  if (ended.neverListened) {
    console.say("the application never listened: norix_initialize() failed");
  }
  return ending;
}

Ending inBackground(const Target &target, const LaunchOptions &options) {
  const launch::LeftRunning left = launch::launchInBackground(target, options);
  Ending ending;
  ending.text =
      target.id + " listens, process " + std::to_string(left.application) + ", log " + left.log;
  ending.facts = {
      {"event", "listening"}, {"app", target.id}, {"pid", left.application}, {"log", left.log}};
  return ending;
}

// An application can be stopped when its folder is gone.
std::string idOf(const std::string &target) {
  try {
    return launch::findTarget(target).id;
  } catch (const LaunchError &) {
    return target;
  }
}

Ending stop(const std::string &target) {
  const std::string id = idOf(target);
  Ending ending;
  if (!launch::stopLaunched(id)) {
    ending.outcome = Outcome::NotLaunched;
    ending.subject.app = id;
  }
  return ending;
}

Ending start(const Options &options, const Console &console) {
  const Target target = launch::findTarget(options.launch.target);
  if (options.launch.waits) {
    return inBackground(target, options.launch);
  }
  return endingOf(launch::Supervisor(target, options.launch).run(), options, console);
}

Ending launchOrStop(Options options, const Console &console) {
  options.launch.isJson = console.isJson();
  if (options.stops) {
    return stop(options.launch.target);
  }
  try {
    return start(options, console);
  } catch (const LaunchError &error) {
    Ending ending;
    ending.outcome = Outcome::CannotLaunch;
    ending.subject.detail = error.what();
    ending.facts = {{"event", "finding"}, {"finding", error.word()}, {"sentence", error.what()}};
    return ending;
  }
}

} // namespace

void addLaunch(Program &program) {
  auto options = std::make_shared<Options>();
  CLI::App &command =
      program.add("launch", "Starts an application from its folder, and says what it does wrong",
                  {"norix-assistant launch build/dev/examples/light",
                   "NORIX_DESKTOP_APPS=~/apps norix-assistant launch org.example.light --wait",
                   "norix-assistant launch --stop org.example.light"},
                  [options](Console &console) { return launchOrStop(*options, console); });
  LaunchOptions &launch = options->launch;
  command
      .add_option("FOLDER|APP", launch.target,
                  "The folder with the application's tizen-manifest.xml, that file, or an app id "
                  "that names a folder in $NORIX_DESKTOP_APPS")
      ->required();
  command.add_flag("--trace", launch.traces, "Shows what happens in the application");
  command.add_flag("--strict", launch.isStrict, "Ends with status 10 when there were findings");
  CLI::Option *wait = command.add_flag(
      "--wait", launch.waits, "Returns when the application listens, and leaves it running");
  command.add_flag("--stop", options->stops, "Ends an application that was launched")
      ->excludes(wait);
  command
      .add_option("--completion-timeout", launch.completionTimeout,
                  "After how long the library gives up waiting for an answer, instead of 30")
      ->type_name("SECONDS")
      ->check(checkSeconds, "");
  command
      .add_option("--allow-list", launch.allowList,
                  "The allow list that the application reads, instead of the device's")
      ->type_name("FILE");
  command.add_option("ARGUMENT", launch.arguments, "Passed on to the application; after --");
}

} // namespace norix::assistant::cli
