// SPDX-License-Identifier: Apache-2.0
//
// What the tools cost: the probe in an application, the bridge between an agent and an application,
// the start of a command, and a long scenario.
#include "application/App.h"
#include "harness/Machine.h"
#include "harness/Rounds.h"
#include "harness/program.h"
#include "support/TemporaryRuntime.h"
#include "tools/EventSink.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using benchmarks::App;
using benchmarks::Assistant;
using benchmarks::Samples;
using nlohmann::json;
using support::Process;

constexpr std::size_t kAnswerSize = 120;
constexpr int kSteps = 1000;
constexpr const char *kBusctl = "/usr/bin/busctl";

struct Options {
  int rounds = 21;
  int exchanges = 500;
  int starts = 5;
  int cpu = -1;
};

std::string action() {
  return benchmarks::answerAction(kAnswerSize);
}

/** How long the main thread of a process, which sleeps now, has run on a CPU. */
double mainThreadTime(pid_t pid) {
  const std::string id = std::to_string(pid);
  double nanoseconds = 0;
  std::ifstream("/proc/" + id + "/task/" + id + "/schedstat") >> nanoseconds;
  return nanoseconds;
}

/** An application and its assistant, and the CPU time of the application's loop per request. */
class Probed {
public:
  Probed(const std::string &appId, const Process::Environment &environment)
      : _app(appId, {0, environment, {}}), _assistant(appId) {}

  double timePerRequest(int exchanges) {
    Samples samples;
    _assistant.exchange(action(), kAnswerSize, exchanges, samples);
    const double before = mainThreadTime(_app.pid());
    _assistant.exchange(action(), kAnswerSize, exchanges, samples);
    return (mainThreadTime(_app.pid()) - before) / exchanges;
  }

private:
  App _app;
  Assistant _assistant;
};

json measureProbe(const Options &options, const support::TemporaryRuntime &runtime) {
  const std::string socket = runtime.write("probe", "").parent_path() / "events";
  const benchmarks::EventSink events(socket);
  Probed without("org.example.plain", {});
  Probed with("org.example.probed",
              {{"LD_PRELOAD", BENCHMARK_PROBE}, {"NORIX_PROBE_SOCKET", socket}});
  json result = {{"without", json::array()}, {"with", json::array()}};
  for (int round = 0; round < options.rounds; ++round) {
    result["without"].push_back(without.timePerRequest(options.exchanges));
    result["with"].push_back(with.timePerRequest(options.exchanges));
  }
  if (!events.awaitFirst()) {
    throw std::runtime_error("the probe reported nothing");
  }
  result["bytes"] = events.received();
  return result;
}

/** An agent's side of norix-assistant mcp. */
class Agent {
public:
  explicit Agent(const std::string &folder) : _bridge({BENCHMARK_ASSISTANT, "mcp", folder}) {
    ask("initialize", {{"protocolVersion", "2025-11-25"},
                       {"capabilities", json::object()},
                       {"clientInfo", {{"name", "benchmark"}, {"version", "1"}}}});
    _bridge.writeLine(R"({"jsonrpc":"2.0","method":"notifications/initialized"})");
    const json listed = ask("tools/list", json::object());
    for (const json &tool : listed.at("tools")) {
      if (!tool.at("annotations").at("readOnlyHint")) {
        _tool = tool.at("name");
      }
    }
  }

  void exchange(int count, Samples &samples) {
    auto start = Samples::Clock::now();
    for (int i = 0; i < count; ++i) {
      const json result = ask("tools/call", {{"name", _tool}, {"arguments", json::object()}});
      start = samples.addSince(start);
      if (result.at("content").at(0).at("text").get<std::string>().size() != kAnswerSize) {
        throw std::runtime_error("the bridge answered " + result.dump());
      }
    }
  }

private:
  json ask(const char *method, const json &parameters) {
    const json message = {
        {"jsonrpc", "2.0"}, {"id", ++_id}, {"method", method}, {"params", parameters}};
    _bridge.writeLine(message.dump());
    const json answer = json::parse(_bridge.readLine());
    if (!answer.contains("result")) {
      throw std::runtime_error("the bridge answered " + answer.dump());
    }
    return answer.at("result");
  }

  Process _bridge;
  std::string _tool;
  int _id = 0;
};

std::string declare(const support::TemporaryRuntime &runtime, const std::string &appId) {
  runtime.install(appId, "1.0-beta");
  const json declared = {
      {"version", 1},
      {"actions", {{{"id", action()}, {"title", "Answer"}, {"description", "Answers."}}}}};
  runtime.write("apps/" + appId + "/shared/res/norix-actions.json", declared.dump());
  // What the manifest names has to be there. It is never started: the application runs already.
  const auto program = runtime.write("apps/" + appId + "/app", "#!/bin/sh\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  return program.parent_path();
}

json measureBridge(const Options &options, const support::TemporaryRuntime &runtime) {
  const std::string folder = declare(runtime, "org.example.bridged");
  const App asked("org.example.direct", {});
  const App bridged("org.example.bridged", {});
  Assistant assistant("org.example.direct");
  Agent agent(folder);
  return benchmarks::measure(
      {{"client library",
        [&](int count, Samples &samples) {
          assistant.exchange(action(), kAnswerSize, count, samples);
        }},
       {"bridge", [&](int count, Samples &samples) { agent.exchange(count, samples); }}},
      options.rounds, options.exchanges);
}

/** The time from the start of a program to its end. */
benchmarks::Contender starting(const std::string &name, const std::vector<std::string> &command) {
  return {name, [command](int count, Samples &samples) {
            auto start = Samples::Clock::now();
            for (int i = 0; i < count; ++i) {
              Process process(command);
              const auto outcome = process.finish();
              start = samples.addSince(start);
              if (outcome.status != 0) {
                throw std::runtime_error(command[0] + ": " + outcome.err);
              }
            }
          }};
}

json measureStart(const Options &options) {
  const App app("org.example.start", {});
  std::vector<benchmarks::Contender> contenders{
      starting("norix-assistant state", {BENCHMARK_ASSISTANT, "state", "org.example.start"})};
  if (std::filesystem::exists(kBusctl)) {
    contenders.push_back(starting("busctl --version", {kBusctl, "--version"}));
  }
  return benchmarks::measure(contenders, options.rounds, options.starts);
}

double nanosecondsOf(const std::function<void()> &work) {
  const auto start = Samples::Clock::now();
  work();
  return std::chrono::duration<double, std::nano>(Samples::Clock::now() - start).count();
}

/** A scenario against an application that runs, and as many exchanges through the client library.
 */
json measureScenario(const Options &options, const support::TemporaryRuntime &runtime) {
  const std::string id = "org.example.played";
  const App app(id, {});
  std::string scenario = "application: {running: " + id + "}\nsteps:\n";
  for (int i = 0; i < kSteps; ++i) {
    scenario += "- run: " + action() + "\n";
  }
  const std::string file = runtime.write("scenario.yaml", scenario);
  json result = {{"steps", kSteps}, {"exchanges", json::array()}, {"played", json::array()}};
  for (int round = 0; round < options.rounds; ++round) {
    Samples samples;
    // A connection each: the answers to a sender go to the one that registered last.
    result["exchanges"].push_back(
        nanosecondsOf([&] { Assistant(id).exchange(action(), kAnswerSize, kSteps, samples); }));
    result["played"].push_back(nanosecondsOf([&] {
      Process process({BENCHMARK_ASSISTANT, "test", file});
      const auto outcome = process.finish();
      if (outcome.status != 0) {
        throw std::runtime_error("the scenario failed: " + outcome.out + outcome.err);
      }
    }));
  }
  return result;
}

json measure(const Options &options) {
  const support::TemporaryRuntime runtime;
  const norix::assistant::MainLoop loop;
  return {{"benchmark", "tools"},
          {"rounds", options.rounds},
          {"probe", measureProbe(options, runtime)},
          {"bridge", measureBridge(options, runtime)},
          {"scenario", measureScenario(options, runtime)},
          {"start", measureStart(options)}};
}

int run(int argc, char **argv) {
  Options options;
  CLI::App commandLine("Measures what the tools cost; writes JSON.");
  commandLine
      .add_option("--rounds", options.rounds, "Rounds, in each of which everyone has a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--exchanges", options.exchanges, "Exchanges of a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--starts", options.starts, "Starts of a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--cpu", options.cpu, "The CPU for all processes; by default the last");
  CLI11_PARSE(commandLine, argc, argv);

  benchmarks::pinTo(options.cpu);
  std::cout << measure(options).dump(2) << "\n";
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("tools", run, argc, argv);
}
