// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Stage.h"

#include <algorithm>
#include <cmath>
#include <poll.h>
#include <utility>

namespace norix::assistant::scenario {
namespace {

// What the last events of an application may take.
constexpr double kLastEvents = 5.0;
// How long an application that is left running may take to tell what it did: the probe sends what
// it has some fifty times a second.
constexpr double kPendingEvents = 0.3;
constexpr std::uint64_t kPerMillisecond = 1000000;
constexpr double kNanosecondsPerSecond = 1e9;

int millisecondsUntil(std::uint64_t end) {
  const std::uint64_t now = trace::monotonicNow();
  return now >= end ? 0 : static_cast<int>((end - now + kPerMillisecond - 1) / kPerMillisecond);
}

} // namespace

Stage::Stage(const Scenario &scenario, const std::string &folder)
    : _application(scenario.application, folder) {}

Sender &Stage::sender(const std::string &name) {
  return *std::find_if(_senders.begin(), _senders.end(),
                       [&name](const Sender &sender) { return sender.setup().name == name; });
}

void Stage::start(const Scenario &scenario) {
  _application.start();
  takeEvents();
  if (_senders.empty()) {
    for (const SenderSetup &setup : scenario.senders) {
      _senders.emplace_back(setup, _application.id());
    }
  }
}

void Stage::end() {
  for (Sender &sender : _senders) {
    sender.kill();
  }
  if (_application.isLaunched()) {
    _application.end();
    (void)awaitApplicationsEnd();
  } else {
    (void)waitUntil([] { return false; }, _application.isWatched() ? kPendingEvents : 0.0);
  }
}

bool Stage::awaitApplicationsEnd() {
  return waitUntil([this] { return _application.hasEnded(); }, kLastEvents);
}

bool Stage::waitUntil(const std::function<bool()> &condition, double seconds) {
  const std::uint64_t end =
      trace::monotonicNow() + static_cast<std::uint64_t>(seconds * kNanosecondsPerSecond);
  listen(0);
  while (!condition()) {
    const int left = millisecondsUntil(end);
    if (left == 0) {
      return false;
    }
    listen(left);
  }
  return true;
}

void Stage::listen(int milliseconds) {
  // A negative descriptor is left out by poll().
  std::vector<pollfd> polled = {{_application.descriptor(), POLLIN, 0}};
  for (const Sender &sender : _senders) {
    polled.push_back({sender.descriptor(), POLLIN, 0});
  }
  if (poll(polled.data(), polled.size(), milliseconds) <= 0) {
    return;
  }
  takeEvents();
  for (Sender &sender : _senders) {
    for (const Frames::Json &message : sender.receive()) {
      _listener(sender, message);
    }
  }
}

void Stage::takeEvents() {
  std::vector<trace::Event> arrived = _application.receive();
  std::move(arrived.begin(), arrived.end(), std::back_inserter(_events));
}

void Stage::note(nlohmann::json members, std::uint64_t time) {
  trace::Event event = trace::makeEvent("assistant", std::move(members));
  event.time = time;
  event.members["t"] = time;
  _events.push_back(std::move(event));
}

} // namespace norix::assistant::scenario
