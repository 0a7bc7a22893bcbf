// SPDX-License-Identifier: Apache-2.0
//
// What libnorix.so weighs: in the file, in the memory of an idle application, and in its start.
#include "application/App.h"
#include "harness/Memory.h"
#include "harness/program.h"
#include "support/TemporaryRuntime.h"

#include <CLI/CLI.hpp>
#include <Ecore.h>
#include <malloc.h>
#include <norix.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace {

using benchmarks::Samples;

constexpr const char *kAppId = "org.example.size";
constexpr double kMedian = 0.5;

struct Start {
  double nanoseconds;
  std::size_t heapBytes;
  long privateDirty;
};

/** The first initialisation of a process, and what it takes of the heap, the platform included. */
Start initialize() {
  const std::size_t heapBefore = mallinfo2().uordblks;
  const long dirtyBefore = benchmarks::memoryOf(getpid()).privateDirty;
  Samples samples;
  const auto start = Samples::Clock::now();
  if (norix_initialize() != NORIX_ERROR_NONE) {
    throw std::runtime_error("norix_initialize fails");
  }
  samples.addSince(start);
  return {samples.mean(), mallinfo2().uordblks - heapBefore,
          benchmarks::memoryOf(getpid()).privateDirty - dirtyBefore};
}

int startOnce() {
  const norix::assistant::MainLoop loop;
  const Start start = initialize();
  std::cout << start.nanoseconds << " " << start.heapBytes << " " << start.privateDirty << "\n";
  return EXIT_SUCCESS;
}

nlohmann::json measureStart(int starts) {
  Samples samples;
  Start last{};
  for (int i = 0; i < starts; ++i) {
    support::Process process({"/proc/self/exe", "--start-once"},
                             {{"AUL_APPID", kAppId}, {"DLOG_FILTER", "*:S"}});
    std::istringstream(process.readLine()) >> last.nanoseconds >> last.heapBytes
        >> last.privateDirty;
    samples.addNanoseconds(last.nanoseconds);
  }
  return {{"starts", starts},
          {"p50", samples.quantile(kMedian)},
          {"heapBytes", last.heapBytes},
          {"privateDirty", last.privateDirty}};
}

nlohmann::json measureFile(const support::TemporaryRuntime &runtime) {
  const std::filesystem::path stripped = runtime.write("stripped.so", "");
  support::Process strip({BENCHMARK_STRIP, "-o", stripped, BENCHMARK_LIBRARY});
  if (strip.wait() != 0) {
    throw std::runtime_error("strip: " + strip.errors());
  }
  return {{"bytes", std::filesystem::file_size(stripped)}};
}

nlohmann::json measure(int starts) {
  const support::TemporaryRuntime runtime;
  runtime.install(kAppId, "1.0-beta");
  const benchmarks::App idle("org.example.idle", {});
  return {{"benchmark", "size"},
          {"file", measureFile(runtime)},
          {"mapped", toJson(benchmarks::memoryOf(idle.pid(), "libnorix.so"))},
          {"application", toJson(benchmarks::memoryOf(idle.pid()))},
          {"start", measureStart(starts)}};
}

int run(int argc, char **argv) {
  int starts = 20;
  bool once = false;
  CLI::App commandLine("Weighs libnorix.so; writes JSON.");
  commandLine.add_option("--starts", starts, "How many processes initialise the library")
      ->check(CLI::PositiveNumber);
  commandLine.add_flag("--start-once", once)->group("");
  CLI11_PARSE(commandLine, argc, argv);

  if (once) {
    return startOnce();
  }
  std::cout << measure(starts).dump(2) << "\n";
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("size", run, argc, argv);
}
