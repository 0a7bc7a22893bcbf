// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/launch.h"

#include "assistant/launch/Background.h"
#include "assistant/launch/Supervisor.h"
#include "assistant/trace/visible.h"

#include <iostream>
#include <sstream>
#include <sys/wait.h>

namespace norix::assistant::cli {
namespace {

using launch::Ending;
using launch::LaunchError;
using launch::LaunchOptions;
using launch::Target;

// What shells add to the number of a signal.
constexpr int kSignalStatus = 128;

LaunchOptions launchOptions(const Options &options) {
  LaunchOptions made;
  made.target = options.target;
  made.arguments = options.arguments;
  made.traces = options.traces;
  made.isJson = options.isJson;
  made.isStrict = options.isStrict;
  made.waits = options.waitsForListening;
  made.completionTimeout = options.completionTimeout;
  return made;
}

// The output of an application may stand in it: shown, line by line, never executed.
void printError(const std::string &text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::cerr << trace::visible(line) << '\n';
  }
}

ExitStatus refuse(const LaunchError &error, const Options &options) {
  if (options.isJson) {
    const nlohmann::json finding = {
        {"event", "finding"}, {"finding", error.word()}, {"sentence", error.what()}};
    std::cout << finding.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  }
  printError(std::string("norix-assistant: cannot launch: ") + error.what());
  return ExitStatus::CannotLaunch;
}

void printEnding(const Ending &ending, const Options &options, int status) {
  if (options.isJson) {
    const nlohmann::json event = {
        {"event", "ended"}, {"status", status}, {"findings", ending.findings}};
    std::cout << event.dump() << std::endl;
  }
  if (WIFSIGNALED(ending.status) && ending.signal == 0) {
    std::cerr << "norix-assistant: the application was ended by signal " << WTERMSIG(ending.status)
              << '\n';
  }
  if (ending.neverListened) {
    std::cerr << "norix-assistant: the application never listened: norix_initialize() failed\n";
  }
}

int statusOf(const Ending &ending, const Options &options) {
  if (options.isStrict && ending.findings > 0) {
    return static_cast<int>(ExitStatus::FindingsSeen);
  }
  // A signal for this process is passed on: the application decides how it ends.
  if (WIFSIGNALED(ending.status)) {
    return kSignalStatus + WTERMSIG(ending.status);
  }
  const int status = WEXITSTATUS(ending.status);
  return status == 0 && ending.neverListened ? static_cast<int>(ExitStatus::CannotLaunch) : status;
}

ExitStatus inForeground(const Target &target, const Options &options) {
  const LaunchOptions made = launchOptions(options);
  const Ending ending = launch::Supervisor(target, made).run();
  const int status = statusOf(ending, options);
  printEnding(ending, options, status);
  return static_cast<ExitStatus>(status);
}

ExitStatus inBackground(const Target &target, const Options &options) {
  const launch::LeftRunning left = launch::launchInBackground(target, launchOptions(options));
  if (options.isJson) {
    const nlohmann::json event = {
        {"event", "listening"}, {"app", target.id}, {"pid", left.application}, {"log", left.log}};
    std::cout << event.dump() << '\n';
  } else {
    std::cout << target.id << " listens, process " << left.application << ", log " << left.log
              << '\n';
  }
  return ExitStatus::Answered;
}

// An application can be stopped when its folder is gone.
std::string idOf(const std::string &target) {
  try {
    return launch::findTarget(target).id;
  } catch (const LaunchError &) {
    return target;
  }
}

ExitStatus stop(const Options &options) {
  const std::string id = idOf(options.target);
  if (launch::stopLaunched(id)) {
    return ExitStatus::Answered;
  }
  printError("norix-assistant: '" + id + "' was not started by norix-assistant launch, or has "
             + "ended already");
  return ExitStatus::CannotConnect;
}

} // namespace

ExitStatus launch(const Options &options) {
  if (options.stops) {
    return stop(options);
  }
  try {
    const Target target = launch::findTarget(options.target);
    return options.waitsForListening ? inBackground(target, options)
                                     : inForeground(target, options);
  } catch (const LaunchError &error) {
    return refuse(error, options);
  }
}

} // namespace norix::assistant::cli
