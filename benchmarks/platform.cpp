// SPDX-License-Identifier: Apache-2.0
//
// The road between two processes for callgrind to count: of the application, which this program
// starts under valgrind, or of the assistant, when this program is run under valgrind itself.
#include "application/App.h"
#include "application/BareAssistant.h"
#include "harness/program.h"
#include "support/TemporaryRuntime.h"

#include <CLI/CLI.hpp>
#include <valgrind/callgrind.h>

#include <cstdlib>
#include <iostream>

namespace {

constexpr const char *kAppId = "org.example.counted";
constexpr int kWarmUp = 10;
constexpr std::size_t kAnswerSize = benchmarks::kAnswerSizes.front();

struct Options {
  int requests = 1000;
  std::string profile;
  std::string valgrind = "/usr/bin/valgrind";
};

// Functions are looked up before the first request instead of during it.
const support::Process::Environment kBindAtStart = {{"LD_BIND_NOW", "1"}};

// The request at the begin is counted from its callback on, that at the end up to it: one together.
void countApplication(const Options &options) {
  benchmarks::App::Options appOptions;
  appOptions.environment = kBindAtStart;
  appOptions.runner = {options.valgrind, "--tool=callgrind", "--instr-atstart=no",
                       "--callgrind-out-file=" + options.profile};
  const benchmarks::App app(kAppId, appOptions);
  benchmarks::BareAssistant assistant(kAppId);
  benchmarks::Samples samples;
  const std::string action = benchmarks::answerAction(kAnswerSize);
  assistant.exchange(action, kAnswerSize, kWarmUp, samples);
  assistant.exchange(benchmarks::kBeginCounting, 0, 1, samples);
  assistant.exchange(action, kAnswerSize, options.requests - 1, samples);
  assistant.exchange(benchmarks::kEndCounting, 0, 1, samples);
}

void countAssistant(const Options &options) {
  const benchmarks::App app(kAppId, {});
  benchmarks::Assistant assistant(kAppId);
  benchmarks::Samples samples;
  const std::string action = benchmarks::answerAction(kAnswerSize);
  assistant.exchange(action, kAnswerSize, kWarmUp, samples);
  CALLGRIND_START_INSTRUMENTATION;
  assistant.exchange(action, kAnswerSize, options.requests, samples);
  CALLGRIND_STOP_INSTRUMENTATION;
  CALLGRIND_DUMP_STATS;
}

int run(int argc, char **argv) {
  Options options;
  CLI::App commandLine("Makes requests for callgrind to count; writes nothing itself.");
  commandLine.add_option("--requests", options.requests)->check(CLI::PositiveNumber);
  commandLine.add_option("--profile", options.profile,
                         "Counts the application, into this file with .1 at its end; without it, "
                         "run this program under callgrind to count the assistant");
  commandLine.add_option("--valgrind", options.valgrind)->check(CLI::ExistingFile);
  CLI11_PARSE(commandLine, argc, argv);

  const support::TemporaryRuntime runtime;
  if (options.profile.empty()) {
    countAssistant(options);
  } else {
    countApplication(options);
  }
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("platform", run, argc, argv);
}
