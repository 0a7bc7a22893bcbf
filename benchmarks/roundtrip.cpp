// SPDX-License-Identifier: Apache-2.0
//
// Request → callback → answer between two processes: the library, and what it is compared with.
#include "application/actions.h"
#include "assistant/client/MainLoop.h"
#include "harness/Machine.h"
#include "harness/Rounds.h"
#include "harness/program.h"
#include "peers/Peer.h"
#include "support/TemporaryRuntime.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace {

using benchmarks::Contender;
using benchmarks::Peer;
using benchmarks::PeerKind;
using benchmarks::Samples;

// An exchange of so many bytes costs twice that of a small one.
constexpr std::size_t kDoublingSize = 16384;
constexpr int kFewest = 10;

struct Options {
  int rounds = 15;
  int exchanges = 1000;
  int cpu = -1;
  std::vector<std::string> serve;
};

// The first is what the others are compared with.
std::vector<PeerKind> kinds() {
  return {benchmarks::bareSockets(),
          benchmarks::ecoreSockets(),
          benchmarks::ecoreSocketsWithDuties(),
          benchmarks::ecoreSocketsBothSides(),
          benchmarks::libraryInCallback(),
          benchmarks::libraryInLaterTurn(),
          benchmarks::libraryAndAssistant(),
          benchmarks::messageBus(),
          benchmarks::busPeerToPeer(),
          benchmarks::grpcOverUnixSocket()};
}

int serve(const std::vector<std::string> &arguments) {
  for (const PeerKind &kind : kinds()) {
    if (kind.name == arguments.front()) {
      return kind.serve({arguments.begin() + 1, arguments.end()});
    }
  }
  std::cerr << "no such peer: " << arguments.front() << "\n";
  return EXIT_FAILURE;
}

int exchangesOf(std::size_t answerSize, int ofSmallOnes) {
  const std::size_t share = 1 + answerSize / kDoublingSize;
  return std::max(kFewest, ofSmallOnes / static_cast<int>(share));
}

nlohmann::json measure(const Options &options) {
  const support::TemporaryRuntime runtime;
  // Throughout: Ecore does not take the death of a process well between two starts.
  const norix::assistant::MainLoop loop;
  const std::filesystem::path folder = runtime.write("folder", "").parent_path();
  std::vector<std::unique_ptr<Peer>> peers;
  std::vector<std::string> names;
  nlohmann::json report = {{"benchmark", "roundtrip"}, {"rounds", options.rounds}};
  for (const PeerKind &kind : kinds()) {
    if (kind.start) {
      peers.push_back(kind.start(folder));
      names.push_back(kind.name);
    } else {
      report["missing"][kind.name] = kind.packages;
    }
  }
  for (const std::size_t size : benchmarks::kAnswerSizes) {
    std::vector<Contender> contenders;
    for (std::size_t i = 0; i < peers.size(); ++i) {
      contenders.push_back({names[i], [peer = peers[i].get(), size](int count, Samples &samples) {
                              peer->exchange(size, count, samples);
                            }});
    }
    const int exchanges = exchangesOf(size, options.exchanges);
    report["sizes"].push_back(
        {{"answer", size},
         {"exchanges", exchanges},
         {"contenders", benchmarks::measure(contenders, options.rounds, exchanges)}});
  }
  return report;
}

int run(int argc, char **argv) {
  Options options;
  CLI::App commandLine("Times a request and its answer between two processes; writes JSON.");
  commandLine
      .add_option("--rounds", options.rounds, "Rounds, in each of which everyone has a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--exchanges", options.exchanges, "Exchanges of a turn")
      ->check(CLI::PositiveNumber);
  commandLine.add_option("--cpu", options.cpu, "The CPU for all processes; by default the last");
  commandLine.add_option("--serve", options.serve)->group("");
  CLI11_PARSE(commandLine, argc, argv);

  if (!options.serve.empty()) {
    return serve(options.serve);
  }
  benchmarks::pinTo(options.cpu);
  std::cout << measure(options).dump(2) << "\n";
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("roundtrip", run, argc, argv);
}
