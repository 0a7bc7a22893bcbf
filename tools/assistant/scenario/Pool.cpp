// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Pool.h"

#include "assistant/report/json.h"
#include "assistant/scenario/Runner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::scenario {
namespace {

namespace fs = std::filesystem;
using report::Outcome;

std::string makeFolder() {
  std::error_code ignored;
  std::string path = (fs::temp_directory_path(ignored) / "norix-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("cannot make the folder '" + path + "': " + std::strerror(errno));
  }
  return path;
}

// Workers that were killed leave launchers behind, which end their applications first: they are
// children of this process then, and write to the folder until they end. Others that an application
// has left running are not waited for.
void awaitOrphans() {
  constexpr int kMostPauses = 300;
  constexpr useconds_t kPause = 10000;
  pid_t ended = 0;
  for (int pauses = 0; ended >= 0 && pauses < kMostPauses; pauses += ended == 0 ? 1 : 0) {
    ended = waitpid(-1, nullptr, WNOHANG);
    if (ended == 0) {
      usleep(kPause);
    }
  }
}

bool isShared(const Scenario &scenario) {
  return !scenario.application.running.empty();
}

std::string describeEnd(int status) {
  return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                             : "status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

Pool::~Pool() {
  abandon();
}

void Pool::abandon() {
  const std::lock_guard<std::mutex> lock(_mutex);
  _isAbandoned = true;
  const bool isPlaying = !_workers.empty();
  for (const Worker &worker : _workers) {
    kill(worker.process, SIGTERM);
    waitpid(worker.process, nullptr, 0);
  }
  _workers.clear();
  if (isPlaying) {
    awaitOrphans();
  }
  std::error_code ignored;
  fs::remove_all(_folder, ignored);
}

void Pool::play(const std::vector<Scenario> &scenarios, const Done &done) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  _scenarios = &scenarios;
  _isStarted.assign(scenarios.size(), false);
  _results.clear();
  _reported = 0;
  _isStopping = false;
  while (_reported < scenarios.size()) {
    startWhatMay();
    if (!_workers.empty()) {
      awaitSome();
    }
    report(done);
  }
}

void Pool::startWhatMay() {
  const std::lock_guard<std::mutex> lock(_mutex);
  if (_folder.empty()) {
    _folder = makeFolder();
  }
  for (std::size_t i = 0; i < _scenarios->size(); ++i) {
    const Scenario &scenario = (*_scenarios)[i];
    if (_isStarted[i] || _isAbandoned) {
      continue;
    }
    if (_isStopping) {
      _isStarted[i] = true;
      _results.emplace(i, notPlayed(scenario, Outcome::Skipped, "an earlier scenario failed"));
    } else if (mayStart(scenario)) {
      start(i);
    }
  }
}

bool Pool::mayStart(const Scenario &scenario) const {
  const bool isOther = std::any_of(_workers.begin(), _workers.end(),
                                   [](const Worker &worker) { return worker.isShared; });
  return _workers.size() < _jobs && !(isShared(scenario) && isOther);
}

void Pool::start(std::size_t index) {
  const Scenario &scenario = (*_scenarios)[index];
  auto [here, there] = Frames::pair();
  const pid_t process = fork();
  if (process < 0) {
    throw std::runtime_error(std::string("cannot start a process: ") + std::strerror(errno));
  }
  if (process == 0) {
    become(scenario, there);
  }
  _isStarted[index] = true;
  _workers.push_back({process, index, std::move(here), isShared(scenario)});
}

// In the process that plays a scenario.
void Pool::become(const Scenario &scenario, const Frames &frames) const {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const std::string folder = _folder + "/" + std::to_string(getpid());
  report::Case played;
  try {
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms::owner_all);
    if (!isShared(scenario)) {
      setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    }
    played = Runner(scenario, folder).run();
  } catch (const std::exception &error) {
    played = notPlayed(scenario, Outcome::Broken, error.what());
  }
  (void)frames.send(report::toJson(played));
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  _exit(EXIT_SUCCESS);
}

void Pool::awaitSome() {
  std::vector<pollfd> polled;
  for (const Worker &worker : _workers) {
    polled.push_back({worker.frames.descriptor(), POLLIN, 0});
  }
  (void)poll(polled.data(), polled.size(), -1);
  const std::lock_guard<std::mutex> lock(_mutex);
  _workers.remove_if([this](Worker &worker) { return takeResult(worker); });
}

// Whether the worker is done.
bool Pool::takeResult(Worker &worker) {
  const std::vector<Frames::Json> values = worker.frames.receive();
  if (values.empty() && !worker.frames.hasEnded()) {
    return false;
  }
  int status = 0;
  waitpid(worker.process, &status, 0);
  const Scenario &scenario = (*_scenarios)[worker.index];
  _results.emplace(worker.index, values.empty() ? notPlayed(scenario, Outcome::Broken,
                                                            "the process that played it ended with "
                                                                + describeEnd(status))
                                                : report::caseFrom(values.front()));
  return true;
}

// What is next in order, and all that follows it.
void Pool::report(const Done &done) {
  for (auto next = _results.find(_reported); next != _results.end();
       next = _results.find(_reported)) {
    ++_reported;
    if (!done(std::move(next->second))) {
      _isStopping = true;
    }
    _results.erase(next);
  }
}

} // namespace norix::assistant::scenario
