// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Application.h"

#include "assistant/launch/Report.h"
#include "assistant/launch/Target.h"
#include "assistant/launch/exitStatus.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::scenario {
namespace {

// Whether the kernel has stopped the process, every thread of it: the third field of its status.
bool isInState(pid_t process, char state) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t name = line.rfind(')');
  return name != std::string::npos && name + 2 < line.size() && line[name + 2] == state;
}

// launch's greeting says what was found before anybody watched.
std::vector<trace::Event> findingsIn(const trace::Event &greeting) {
  std::vector<trace::Event> findings;
  for (const nlohmann::json &finding :
       greeting.members.value("findings", nlohmann::json::array())) {
    findings.push_back(
        launch::toEvent({finding.value("finding", ""), finding.value("sentence", "")}));
  }
  return findings;
}

} // namespace

Application::~Application() {
  try {
    end();
  } catch (const std::exception &) {
    // There is nothing left to end.
  }
}

void Application::start() {
  if (_setup.running.empty()) {
    launch();
  } else {
    find();
  }
  _watch = launch::Watch::open(_id);
  _isStopped = false;
}

void Application::launch() {
  const launch::Target target = launch::findTarget(_setup.folder);
  _id = target.id;
  _left = launch::launchInBackground(target, options());
  _process = _left->application;
}

void Application::find() {
  _id = _setup.running;
}

launch::LaunchOptions Application::options() const {
  launch::LaunchOptions options;
  options.target = _setup.folder;
  options.arguments = _setup.arguments;
  options.environment = _setup.environment;
  options.completionTimeout = _setup.completionTimeout;
  options.endsWithStarter = true;
  if (_setup.allowList) {
    options.allowList = _folder + "/allow_list.dat";
    std::ofstream list(*options.allowList);
    for (const std::string &id : *_setup.allowList) {
      list << id << '\n';
    }
  }
  return options;
}

void Application::end() {
  if (!_left) {
    return;
  }
  resume();
  (void)launch::stopLaunched(_id);
  if (!_status) {
    waitpid(_left->supervisor, nullptr, 0);
  }
  _left.reset();
  _status.reset();
  _process = 0;
}

int Application::descriptor() const {
  return hasEnded() ? -1 : _watch->descriptor();
}

std::vector<trace::Event> Application::receive() {
  std::vector<trace::Event> events;
  if (hasEnded()) {
    return events;
  }
  for (trace::Event &event : _watch->read(0)) {
    if (event.name == "launched") {
      _process = static_cast<pid_t>(event.number("pid"));
      std::vector<trace::Event> findings = findingsIn(event);
      std::move(findings.begin(), findings.end(), std::back_inserter(events));
    } else {
      events.push_back(std::move(event));
    }
  }
  return events;
}

std::string Application::howItEnded() {
  int status = 0;
  if (!_status && waitpid(_left->supervisor, &status, 0) == _left->supervisor) {
    _status = launch::exitStatus(status);
  }
  return launch::describeExit(_status.value_or(0));
}

void Application::kill() {
  if (_process > 0) {
    ::kill(_process, SIGKILL);
    _isStopped = false;
  }
}

void Application::stop() {
  if (_process <= 0) {
    return;
  }
  constexpr useconds_t kPause = 200;
  ::kill(_process, SIGSTOP);
  while (::kill(_process, 0) == 0 && !isInState(_process, 'T') && !isInState(_process, 'Z')) {
    usleep(kPause);
  }
  _isStopped = true;
}

void Application::resume() {
  if (_isStopped) {
    ::kill(_process, SIGCONT);
    _isStopped = false;
  }
}

std::string Application::output() const {
  std::ostringstream content;
  if (_left) {
    content << std::ifstream(_left->log).rdbuf();
  }
  return content.str();
}

} // namespace norix::assistant::scenario
