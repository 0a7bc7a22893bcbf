// SPDX-License-Identifier: Apache-2.0
#include "soak/Soak.h"

#include "integration/harness/examples.h"
#include "integration/harness/wire.h"
#include "soak/check.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <poll.h>
#include <sstream>

namespace soak {
namespace {

using namespace std::chrono_literals;
using integration::kLight;
using integration::kMusic;

constexpr int kAssistantsEach = 3;
constexpr int kTickMilliseconds = 10;

// The share of the run that fills caches and pools before anything is measured.
constexpr int kWarmUpShare = 4;
constexpr std::chrono::seconds kLongestWarmUp{60};

// A peer without a complete hello is disconnected after 5 seconds.
constexpr std::chrono::seconds kLongestWelcome{6};

// The library's deliberate leaks grow with hostile peers that request unknown actions or disconnect
// before their answer (docs/behaviour.md, "Memory").
constexpr long kGrowthKiB = 512;
constexpr unsigned long kStrangersPerKiB = 50;

std::string folderFor(const std::string &logs) {
  std::filesystem::remove_all(logs);
  std::filesystem::create_directories(logs);
  return logs;
}

} // namespace

Soak::Soak(unsigned long seed, const std::string &logs)
    : _logs(folderFor(logs)), _dice(seed), _tally(Tally::in(_logs + "/tally")), _strangers(_dice),
      _light({LIGHT_PROGRAM}, applicationEnvironment(kLight, _logs)),
      _music({MUSIC_PROGRAM}, applicationEnvironment(kMusic, _logs)) {
  awaitAnswer(kLight);
  awaitAnswer(kMusic);
}

std::string Soak::run(std::chrono::seconds duration) {
  _strangers.askWithoutReading(kLight);
  load(std::min(duration / kWarmUpShare, kLongestWarmUp));
  const Rest before = settle();
  load(duration);
  const Rest after = settle();

  requireNoFailure();
  require(after.light.descriptors == before.light.descriptors, "the light's descriptors",
          before.light.descriptors, after.light.descriptors);
  const auto leftBehind = static_cast<long>(_strangers.garbagePeers() / kStrangersPerKiB);
  require(after.light.memoryKiB - before.light.memoryKiB <= kGrowthKiB + leftBehind,
          "the light's memory in KiB", before.light.memoryKiB, after.light.memoryKiB);
  require(after.files == before.files, "the files", before.files.size(), after.files.size());
  endApplications();
  return report(duration, before, after);
}

template <typename Function>
void Soak::forEachSubject(Function function) {
  function(_light);
  function(_music);
  std::for_each(_assistants.begin(), _assistants.end(), function);
}

void Soak::load(std::chrono::seconds duration) {
  startAssistants();
  const Clock::time_point end = Clock::now() + duration;
  for (Clock::time_point now = Clock::now(); now < end; now = Clock::now()) {
    misbehave(now);
    requireNoFailure();
    forEachSubject([](Subject &subject) { subject.requireRunning(); });
    _strangers.tick(now);
    (void)poll(nullptr, 0, kTickMilliseconds);
  }
}

void Soak::misbehave(Clock::time_point now) {
  if (_dice.chance(300)) {
    _strangers.sendGarbage(anyTarget());
  }
  if (_dice.chance(80)) {
    _strangers.leaveHalfOpen(anyTarget());
  }
  if (_dice.chance(3)) {
    _strangers.askWithoutReading(kLight);
  }
  strike(now);
}

// Kills and stops processes, and continues those whose stop is over.
void Soak::strike(Clock::time_point now) {
  if (_dice.chance(20)) {
    anyAssistant().killAndRestart();
    ++_kills;
  }
  if (_dice.chance(4)) {
    _music.killAndRestart();
    ++_kills;
  }
  const auto stop = [&](Subject &subject) {
    _stops += subject.stopUntil(now + std::chrono::milliseconds(_dice.below(800))) ? 1 : 0;
  };
  if (_dice.chance(15)) {
    stop(anyAssistant());
  }
  if (_dice.chance(4)) {
    stop(_music);
  }
  if (_dice.chance(4)) {
    stop(_light);
  }
  forEachSubject([now](Subject &subject) { subject.resumeWhenDue(now); });
}

const char *Soak::anyTarget() {
  return _dice.chance(700) ? kLight : kMusic;
}

void Soak::startAssistants() {
  for (int i = 0; i < 2 * kAssistantsEach; ++i) {
    const Subject::Environment environment = {
        {"AUL_APPID", "org.example.assistant" + std::to_string(i)}, {"DLOG_FILTER", "*:S"}};
    _assistants.emplace_back(Subject::Command{SOAK_ASSISTANT, i % 2 == 0 ? kLight : kMusic,
                                              _logs + "/tally", std::to_string(_dice.seed())},
                             environment);
  }
}

// Ends all peers, waits until both applications are idle and answer, and measures the light.
Soak::Rest Soak::settle() {
  requireNoFailure();
  _assistants.clear();
  _strangers.leave();
  _light.resume();
  _music.resume();
  awaitAnswer(kLight);
  awaitAnswer(kMusic);
  return {awaitRest(_light.process().pid(), kLongestWelcome),
          filesBelow(std::getenv("XDG_RUNTIME_DIR"))};
}

void Soak::requireNoFailure() {
  if (_tally.failures == 0) {
    return;
  }
  std::string told = "assistants were failed:";
  for (Subject &assistant : _assistants) {
    told += "\n" + assistant.process().errors();
  }
  throw std::runtime_error(told);
}

void Soak::endApplications() {
  for (Subject *application : {&_light, &_music}) {
    application->process().signal(SIGTERM);
    require(application->process().wait() == 0, "the status of an application that is terminated");
  }
  require(!std::filesystem::exists(integration::socketPath(kLight)), "the light's socket is there");
  require(!std::filesystem::exists(integration::socketPath(kMusic)), "the music's socket is there");
}

std::string Soak::report(std::chrono::seconds duration, const Rest &before, const Rest &after) {
  std::ostringstream line;
  line << "soak: " << duration.count() << " s, " << _tally.requests << " requests, "
       << _tally.connections << " connections, " << _kills << " kills, " << _stops << " stops, "
       << _strangers.garbagePeers() << " garbage peers, " << _strangers.halfOpen() << " half-open, "
       << _strangers.deafDropped() << " of " << _strangers.deaf()
       << " that do not read dropped: " << describe(before.light, after.light) << ", "
       << before.files.size() << " -> " << after.files.size() << " files";
  return line.str();
}

} // namespace soak
