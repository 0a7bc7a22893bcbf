// SPDX-License-Identifier: Apache-2.0
//
// What an exchange costs as its surroundings grow: registered actions, connections, long
// parameters, requests that have gone before, and a log that is written.
#include "application/App.h"
#include "application/Crowd.h"
#include "assistant/client/MainLoop.h"
#include "harness/Machine.h"
#include "harness/Memory.h"
#include "harness/Rounds.h"
#include "harness/program.h"
#include "support/TemporaryRuntime.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <memory>

namespace {

using benchmarks::App;
using benchmarks::Assistant;
using benchmarks::Contender;
using benchmarks::Samples;

constexpr std::size_t kAnswerSize = benchmarks::kAnswerSizes.front();
constexpr int kFirstRequests = 1000;

struct Options {
  int rounds = 15;
  int exchanges = 500;
  int requests = 1000000;
  int cpu = -1;
  std::vector<std::string> crowd;
};

/** An application, and the assistant that asks it. */
class Pair {
public:
  Pair(const std::string &appId, const App::Options &options)
      : _app(appId, options), _assistant(appId) {}

  void exchange(int count, Samples &samples) {
    _assistant.exchange(benchmarks::answerAction(kAnswerSize), kAnswerSize, count, samples);
  }
  Assistant &assistant() { return _assistant; }
  benchmarks::Memory memory() const { return benchmarks::memoryOf(_app.pid()); }

private:
  App _app;
  Assistant _assistant;
};

Contender contender(const std::string &name, Pair &pair) {
  return {name, [&pair](int count, Samples &samples) { pair.exchange(count, samples); }};
}

nlohmann::json measureActions(const Options &options) {
  std::vector<std::unique_ptr<Pair>> pairs;
  std::vector<Contender> contenders;
  for (const int actions : {10, 100, 1000, 10000}) {
    App::Options appOptions;
    appOptions.furtherActions = actions;
    const std::string name = std::to_string(actions);
    pairs.push_back(std::make_unique<Pair>("org.example.actions" + name, appOptions));
    contenders.push_back(contender(name, *pairs.back()));
  }
  return benchmarks::measure(contenders, options.rounds, options.exchanges);
}

nlohmann::json measureConnections(const Options &options) {
  std::vector<std::unique_ptr<benchmarks::CrowdProcess>> crowds;
  std::vector<std::unique_ptr<App>> apps;
  std::vector<Contender> contenders;
  for (const int connections : {1, 10, 100, 500}) {
    const std::string name = std::to_string(connections);
    const std::string appId = "org.example.crowd" + name;
    apps.push_back(std::make_unique<App>(appId, App::Options{}));
    crowds.push_back(std::make_unique<benchmarks::CrowdProcess>(appId, connections));
    contenders.push_back({name, [crowd = crowds.back().get()](int count, Samples &samples) {
                            crowd->exchange(count, samples);
                          }});
  }
  // At least some from each connection.
  constexpr int kOfEach = 4;
  return benchmarks::measure(contenders, options.rounds,
                             std::max(options.exchanges, 500 * kOfEach));
}

nlohmann::json measureParameters(const Options &options) {
  Pair pair("org.example.parameters", {});
  std::vector<Contender> contenders;
  for (const std::size_t size :
       {std::size_t{1}, std::size_t{1} << 10, std::size_t{1} << 16, std::size_t{1} << 20}) {
    contenders.push_back({std::to_string(size), [&pair, size](int count, Samples &samples) {
                            pair.assistant().setParameters(std::string(size, 'p'));
                            pair.exchange(count, samples);
                          }});
  }
  constexpr int kShare = 10;
  return benchmarks::measure(contenders, options.rounds, 1 + options.exchanges / kShare);
}

nlohmann::json measureAge(const Options &options) {
  Pair aged("org.example.aged", {});
  Samples first;
  aged.exchange(kFirstRequests, first);
  const benchmarks::Memory before = aged.memory();
  Samples rest;
  aged.exchange(options.requests, rest);
  const benchmarks::Memory after = aged.memory();

  Pair fresh("org.example.fresh", {});
  const std::vector<Contender> contenders = {contender("fresh", fresh), contender("aged", aged)};
  return {{"requests", options.requests},
          {"memoryBefore", toJson(before)},
          {"memoryAfter", toJson(after)},
          {"contenders", benchmarks::measure(contenders, options.rounds, options.exchanges)}};
}

nlohmann::json measureLog(const Options &options, const support::TemporaryRuntime &runtime) {
  const std::string file = runtime.write("log", "");
  const auto with = [](const std::string &path) {
    App::Options made;
    made.environment = {{"DLOG_FILTER", "*:V"}, {"DLOG_FILE", path}};
    return made;
  };
  Pair silenced("org.example.silent", {});
  Pair toNull("org.example.null", with("/dev/null"));
  Pair toFile("org.example.file", with(file));
  const std::vector<Contender> contenders = {contender("silenced", silenced),
                                             contender("to /dev/null", toNull),
                                             contender("to a file", toFile)};
  return benchmarks::measure(contenders, options.rounds, options.exchanges);
}

nlohmann::json measure(const Options &options) {
  const support::TemporaryRuntime runtime;
  // Throughout: Ecore does not take the death of a process well between two starts.
  const norix::assistant::MainLoop loop;
  return {{"benchmark", "scale"},
          {"rounds", options.rounds},
          {"actions", measureActions(options)},
          {"connections", measureConnections(options)},
          {"parameters", measureParameters(options)},
          {"age", measureAge(options)},
          {"log", measureLog(options, runtime)}};
}

int run(int argc, char **argv) {
  Options options;
  CLI::App commandLine("Times exchanges as their surroundings grow; writes JSON.");
  commandLine
      .add_option("--rounds", options.rounds, "Rounds, in each of which everyone has a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--exchanges", options.exchanges, "Exchanges of a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--requests", options.requests, "How many make an application old")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--cpu", options.cpu, "The CPU for all processes; by default the last");
  commandLine.add_option("--crowd", options.crowd)->group("");
  CLI11_PARSE(commandLine, argc, argv);

  benchmarks::openManyFiles();
  if (!options.crowd.empty()) {
    return benchmarks::runCrowd(options.crowd.at(0), std::stoi(options.crowd.at(1)));
  }
  benchmarks::pinTo(options.cpu);
  std::cout << measure(options).dump(2) << "\n";
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("scale", run, argc, argv);
}
