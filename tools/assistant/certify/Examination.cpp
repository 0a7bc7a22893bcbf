// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Examination.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::certify {
namespace {

// Those that the main thread has started.
void endChildren() {
  const std::string self = std::to_string(getpid());
  std::ifstream children("/proc/" + self + "/task/" + self + "/children");
  for (pid_t child = 0; children >> child;) {
    kill(child, SIGTERM);
  }
}

} // namespace

Examination::Examination(Order order) : _order(std::move(order)) {}

void Examination::findTarget() {
  if (std::exchange(_hasLooked, true)) {
    return;
  }
  try {
    _target = launch::findTarget(_order.application);
    // A connection would start an application that has died, and hide that.
    unsetenv("NORIX_DESKTOP_APPS");
  } catch (const launch::LaunchError &error) {
    _whyNoTarget = error.what();
  }
}

const launch::Target &Examination::target() {
  findTarget();
  if (!_target) {
    throw NotPossible("there is no application to look at: see the check 'manifest'");
  }
  return *_target;
}

std::string Examination::whyNoTarget() {
  findTarget();
  return _whyNoTarget;
}

const std::optional<actions::Reading> &Examination::reading() {
  if (!std::exchange(_hasRead, true)) {
    _reading = actions::read(target().folder);
  }
  return _reading;
}

const actions::Declarations &Examination::declared() {
  if (!reading()) {
    throw NotPossible("the application declares nothing: see the check 'declarations'");
  }
  if (!reading()->isUsable()) {
    throw NotPossible("the declarations have errors: see the check 'declarations-valid'");
  }
  return reading()->declarations;
}

launch::LaunchOptions Examination::launchOptions() const {
  launch::LaunchOptions options;
  options.target = _order.application;
  options.arguments = _order.arguments;
  options.completionTimeout = _order.completionTimeout;
  // The device's list, on this machine by chance, is not the application's matter.
  options.allowList = _folder.path() / "no-allow-list";
  options.endsWithStarter = true;
  return options;
}

std::unique_ptr<Application> Examination::start(const launch::LaunchOptions &options) {
  endApplication();
  const std::lock_guard<std::timed_mutex> lock(_starting);
  waitIfAbandoned();
  try {
    return std::make_unique<Application>(target(), options);
  } catch (const launch::LaunchError &) {
    throw NotPossible("the application does not start: see the check 'starts'");
  }
}

void Examination::waitIfAbandoned() const {
  while (_isAbandoned) {
    pause();
  }
}

void Examination::abandon() {
  constexpr std::chrono::milliseconds kAgain(50);
  _isAbandoned = true;
  do {
    endChildren();
  } while (!_starting.try_lock_for(kAgain));
  endChildren();
  // A launcher kills an application that does not end.
  while (waitpid(-1, nullptr, 0) > 0) {
  }
  _folder.remove();
}

Application &Examination::application() {
  if (!_application || !_application->isRunning()) {
    _application.reset();
    _application = start();
  }
  return *_application;
}

const OrdinaryUse &Examination::ordinaryUse() {
  if (!_ordinaryUse) {
    const bool isUsable = reading() && reading()->isUsable();
    _ordinaryUse =
        useOrdinarily(start(), isUsable ? reading()->declarations : actions::Declarations(),
                      _order.executesDestructive);
  }
  return *_ordinaryUse;
}

std::vector<const ActionUse *> Examination::answeringActions() {
  if (declared().actions.empty()) {
    throw NotPossible("the application declares no actions");
  }
  std::vector<const ActionUse *> answering;
  for (const ActionUse &use : ordinaryUse().actions) {
    if (use.isAnswered()) {
      answering.push_back(&use);
    }
  }
  if (answering.empty()) {
    throw NotPossible("no declared action answers: see the check 'examples-answered'");
  }
  return answering;
}

const Load &Examination::load() {
  if (!_load) {
    std::vector<const ActionUse *> actions;
    try {
      actions = answeringActions();
    } catch (const NotPossible &) {
      // Then the state alone.
    }
    _load = putUnderLoad(*start(), actions);
  }
  return *_load;
}

} // namespace norix::assistant::certify
