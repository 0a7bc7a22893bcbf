// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Supervisor.h"

#include "assistant/launch/Child.h"
#include "assistant/trace/checks.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <initializer_list>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::launch {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::uint64_t kMillisecond = 1000000;
// What an application that was told to end may take for it.
constexpr std::uint64_t kTimeToEnd = 2000 * kMillisecond;
// What the last events may take after the application has ended.
constexpr std::uint64_t kTimeForTheRest = 500 * kMillisecond;
constexpr std::initializer_list<int> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGCHLD};

std::string joined(const char *variable, const std::string &own, const char *separator) {
  const char *const before = std::getenv(variable);
  return before == nullptr || *before == '\0' ? own : own + separator + before;
}

std::map<std::string, std::string>
environmentFor(const Target &target, const LaunchOptions &options, const std::string &socket) {
  std::map<std::string, std::string> environment = {
      {"AUL_APPID", target.id},
      {"NORIX_PROBE_SOCKET", socket},
      {"LD_PRELOAD", joined("LD_PRELOAD", findProbeLibrary(), ":")},
      // An application under AddressSanitizer would not start with another library before its own.
      {"ASAN_OPTIONS", joined("ASAN_OPTIONS", "verify_asan_link_order=0", ":")}};
  if (std::getenv("NORIX_DESKTOP_APPS") == nullptr) {
    environment["NORIX_DESKTOP_APPS"] = appsFolderOf(target);
  }
  if (options.completionTimeout) {
    environment["NORIX_PROBE_COMPLETION_TIMEOUT"] = std::to_string(*options.completionTimeout);
  }
  if (options.allowList) {
    environment["NORIX_PROBE_ALLOW_LIST"] = fs::absolute(*options.allowList);
  }
  // What was asked for comes first, but for what makes the application this one.
  environment.insert(options.environment.begin(), options.environment.end());
  return environment;
}

} // namespace

Supervisor::Supervisor(const Target &target, const LaunchOptions &options)
    : _target(target), _options(options), _probes(target.id), _watchers(target.id),
      _report(options.traces, options.isJson), _findings(target.id) {
  blockSignals();
}

Supervisor::~Supervisor() = default;

Ending Supervisor::run() {
  checkBefore();
  startApplication();
  while (!_status || _probes.areConnected()) {
    waitForSomething();
    if (_status && trace::monotonicNow() > _giveUpAt) {
      break;
    }
  }
  readProbes();
  return {*_status, _signal, _found.size(), _findings.hasFailed() && !_findings.isInitialised()};
}

void Supervisor::blockSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kSignals) {
    sigaddset(&set, signal);
  }
  sigprocmask(SIG_BLOCK, &set, nullptr);
  _signals = Descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

void Supervisor::checkBefore() {
  for (const trace::Finding &finding : trace::checkSdkVersion(_target.metadata, _target.manifest)) {
    add(finding);
  }
}

void Supervisor::startApplication() {
  StartOptions options;
  options.arguments = _options.arguments;
  options.environment = environmentFor(_target, _options, _probes.path());
  options.mergesOutput = _options.isJson;
  _application = start(_target, options);
  _startedAt = static_cast<std::uint64_t>(std::time(nullptr));
  _report.message(trace::makeEvent("started", {{"app", _target.id}, {"pid", _application}}));
}

void Supervisor::waitForSomething() {
  std::vector<pollfd> polled = {{_signals.get(), POLLIN, 0}};
  _probes.addTo(polled);
  _watchers.addTo(polled);
  constexpr int kTick = 50;
  const bool isEnding = _killAt != 0 || _status;
  poll(polled.data(), polled.size(), isEnding ? kTick : -1);

  readProbes();
  takeSignal();
  _watchers.serve(greeting());
  if (_killAt != 0 && !_status && trace::monotonicNow() > _killAt) {
    kill(_application, SIGKILL);
  }
}

void Supervisor::readProbes() {
  for (std::vector<std::string> lines = _probes.read(); !lines.empty(); lines = _probes.read()) {
    for (const std::string &line : lines) {
      see(line);
    }
  }
}

void Supervisor::see(const std::string &line) {
  const std::optional<trace::Event> event = trace::parseEvent(line);
  if (!event) {
    return;
  }
  _watchers.send(line);
  _report.event(*event);
  for (const trace::Finding &finding : _findings.see(*event)) {
    add(finding);
  }
  if (_listening && _findings.isInitialised()) {
    _listening(_application);
    _listening = nullptr;
  }
}

void Supervisor::add(const trace::Finding &finding) {
  _found.push_back(finding);
  const trace::Event event = toEvent(finding);
  _watchers.send(event.members.dump(-1, ' ', false, json::error_handler_t::replace));
  _report.finding(event);
}

void Supervisor::takeSignal() {
  signalfd_siginfo info = {};
  while (read(_signals.get(), &info, sizeof info) == sizeof info) {
    if (info.ssi_signo != SIGCHLD) {
      passOn(static_cast<int>(info.ssi_signo), info.ssi_code);
    }
  }
  int status = 0;
  if (!_status && waitpid(_application, &status, WNOHANG) == _application) {
    _status = status;
    _giveUpAt = trace::monotonicNow() + kTimeForTheRest;
  }
}

// A second signal does not wait. Ctrl-C goes to the application as well, from the terminal itself.
void Supervisor::passOn(int signal, int code) {
  const bool isFirst = _signal == 0;
  _signal = signal;
  _killAt = isFirst ? trace::monotonicNow() + kTimeToEnd : trace::monotonicNow();
  if (isFirst && code != SI_KERNEL) {
    kill(_application, SIGTERM);
  }
}

std::string Supervisor::greeting() const {
  json findings = json::array();
  for (const trace::Finding &finding : _found) {
    findings.push_back({{"finding", finding.word}, {"sentence", finding.sentence}});
  }
  const trace::Event event =
      trace::makeEvent("launched", {{"app", _target.id},
                                    {"pid", _application},
                                    {"since", _startedAt},
                                    {"listens", _findings.isInitialised()},
                                    {"registered", json(_findings.registered())},
                                    {"findings", std::move(findings)}});
  return event.members.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace norix::assistant::launch
