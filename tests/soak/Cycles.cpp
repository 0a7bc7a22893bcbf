// SPDX-License-Identifier: Apache-2.0
#include "soak/Cycles.h"

#include "assistant/client/MainLoop.h"
#include "assistant/client/Session.h"
#include "integration/harness/examples.h"
#include "soak/check.h"
#include "support/TemporaryRuntime.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace soak {
namespace {

using integration::kLight;

constexpr double kCyclePatience = 20.0;
constexpr unsigned long kMostWarmUps = 2000;
constexpr long kToleranceKiB = 1024; // What an allocator takes, and keeps, when it likes.

void runCycle() {
  norix::assistant::Session session(kLight, kCyclePatience);
  const auto answer = session.ask(norix::assistant::stateRequest(), kCyclePatience);
  require(answer.response.text() == "{\"light\":\"off\"}",
          "the state is " + answer.response.text());
}

// The resources of both sides, and the files of the runtime folder.
struct Rest {
  Footprint application;
  Footprint assistant;
  std::vector<std::string> files;

  static Rest of(pid_t application) {
    return {awaitRest(application, std::chrono::milliseconds(500)), Footprint::of(getpid()),
            filesBelow(std::getenv("XDG_RUNTIME_DIR"))};
  }
};

void compare(const char *side, const Footprint &before, const Footprint &after) {
  require(after.descriptors == before.descriptors, std::string(side) + "'s descriptors",
          before.descriptors, after.descriptors);
  require(after.memoryKiB - before.memoryKiB <= kToleranceKiB,
          std::string(side) + "'s memory in KiB", before.memoryKiB, after.memoryKiB);
}

} // namespace

std::string runCycles(unsigned long cycles, const std::string &logs) {
  std::filesystem::create_directories(logs);
  const support::TemporaryRuntime runtime;
  const norix::assistant::MainLoop loop;
  const support::Process light({LIGHT_PROGRAM}, applicationEnvironment(kLight, logs));
  awaitAnswer(kLight);

  for (unsigned long i = 0; i < std::min(cycles, kMostWarmUps); ++i) {
    runCycle();
  }
  const Rest before = Rest::of(light.pid());
  for (unsigned long i = 0; i < cycles; ++i) {
    runCycle();
  }
  const Rest after = Rest::of(light.pid());

  compare("the application", before.application, after.application);
  compare("the assistant", before.assistant, after.assistant);
  require(after.files == before.files, "the files", before.files.size(), after.files.size());
  return "soak: " + std::to_string(cycles) + " cycles: application "
         + describe(before.application, after.application) + "; assistant "
         + describe(before.assistant, after.assistant) + "; " + std::to_string(before.files.size())
         + " -> " + std::to_string(after.files.size()) + " files";
}

} // namespace soak
