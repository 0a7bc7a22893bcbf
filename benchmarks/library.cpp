// SPDX-License-Identifier: Apache-2.0
//
// The library by itself, on a platform that does nothing. Without options a Google Benchmark; with
// --count=<road> --requests=<n> the run that callgrind counts.
#include "nullplatform/NullPlatform.h"

#include <benchmark/benchmark.h>
#include <norix.hpp>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace {

namespace platform = benchmarks::null_platform;

constexpr const char *kAction = "musicPlay";
constexpr const char *kUnknownYet = "musicLater";
constexpr const char *kAnswer =
    "The lamp in the kitchen is off now, and so is the one in the hall, "
    "as you have asked a moment ago. Good night.";

void onAction(void *request, bundle * /*parameters*/, void * /*userData*/) {
  norix_complete_action_execution(request, kAnswer);
}

void onState(void *request, void * /*userData*/) {
  norix_complete_app_state_request(request, kAnswer);
}

void ignore(void * /*request*/, bundle * /*parameters*/, void * /*userData*/) {}

/** Answered inside the callback. */
void requestAction() {
  platform::request(kAction);
}

void requestState() {
  platform::request(ACTION_GET_APP_STATE);
}

/** Parked until its callback is there, and ended by the time-out: the handle cannot be answered. */
void requestBeforeCallback() {
  norix_unset_action_execution_cb(kUnknownYet);
  platform::request(kUnknownYet);
  norix_set_action_execution_cb(kUnknownYet, ignore, nullptr);
  platform::fireTimer(); // Finds the callback.
  platform::fireTimer(); // Gives up the wait for the answer.
}

/** The same callbacks in C, and as norix.hpp has them. */
enum class Language { C, Cpp };

struct Road {
  const char *name;
  void (*travel)();
  Language language = Language::C;
};

constexpr Road kRoads[] = {{"direct", requestAction},
                           {"deferred", requestBeforeCallback},
                           {"state", requestState},
                           {"direct-cpp", requestAction, Language::Cpp},
                           {"state-cpp", requestState, Language::Cpp}};

std::optional<norix::Assistant> inCpp;

void registerInCpp() {
  inCpp.emplace();
  inCpp->onAction(kAction, [](norix::Request request) { request.answer(kAnswer); });
  inCpp->onState([] { return kAnswer; });
}

void start(long furtherActions, Language language = Language::C) {
  inCpp.reset();
  norix_deinitialize();
  if (norix_initialize() != NORIX_ERROR_NONE) {
    std::exit(EXIT_FAILURE);
  }
  norix_set_app_state_request_cb(onState, nullptr);
  norix_set_action_execution_cb(kAction, onAction, nullptr);
  for (long i = 1; i < furtherActions; ++i) {
    norix_set_action_execution_cb(("action-" + std::to_string(i)).c_str(), ignore, nullptr);
  }
  if (language == Language::Cpp) {
    registerInCpp();
  }
  platform::connect();
}

/** Every request is answered, or else the figures are of something else. */
void checkAnswered(unsigned long before, unsigned long requests) {
  const unsigned long answered = platform::sentParcels() - before;
  if (answered != requests) {
    std::fprintf(stderr, "library: %lu answers to %lu requests\n", answered, requests);
    std::exit(EXIT_FAILURE);
  }
}

void run(benchmark::State &state, void (*travel)()) {
  start(state.range(0));
  const unsigned long before = platform::sentParcels();
  for (auto _ : state) { // NOLINT(clang-analyzer-deadcode.DeadStores): the library's own idiom.
    travel();
  }
  checkAnswered(before, static_cast<unsigned long>(state.iterations()));
}

BENCHMARK_CAPTURE(run, direct, requestAction)->ArgName("actions")->Arg(10)->Arg(10000);
BENCHMARK_CAPTURE(run, deferred, requestBeforeCallback)->ArgName("actions")->Arg(10)->Arg(10000);
BENCHMARK_CAPTURE(run, state, requestState)->ArgName("actions")->Arg(10)->Arg(10000);

int count(const std::string &name, unsigned long requests, long actions) {
  for (const Road &road : kRoads) {
    if (name != road.name) {
      continue;
    }
    start(actions, road.language);
    road.travel(); // What the first request alone pays does not count.
    const unsigned long before = platform::sentParcels();
    CALLGRIND_START_INSTRUMENTATION;
    for (unsigned long i = 0; i < requests; ++i) {
      road.travel();
    }
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS;
    checkAnswered(before, requests);
    return EXIT_SUCCESS;
  }
  std::fprintf(stderr,
               "library: no such road: %s (direct, deferred, state, direct-cpp, state-cpp)\n",
               name.c_str());
  return EXIT_FAILURE;
}

/** The text behind "--name=" among the arguments, or the given one. */
std::string option(int argc, char **argv, const std::string &name, const std::string &otherwise) {
  const std::string prefix = "--" + name + "=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0) {
      return argv[i] + prefix.size();
    }
  }
  return otherwise;
}

} // namespace

int main(int argc, char **argv) {
  const std::string road = option(argc, argv, "count", "");
  if (!road.empty()) {
    return count(road, std::stoul(option(argc, argv, "requests", "1000")),
                 std::stol(option(argc, argv, "actions", "10")));
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return EXIT_FAILURE;
  }
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
