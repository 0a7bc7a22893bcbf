// SPDX-License-Identifier: Apache-2.0
#include "harness/Rounds.h"

#include "harness/CpuTime.h"

namespace benchmarks {

namespace {

constexpr int kWarmUpShare = 10;
constexpr double kMedian = 0.5;
constexpr double kTail = 0.99;

struct Measured {
  Samples all;
  std::vector<double> medians;
  std::vector<double> cpuTimes;
};

void takeTurn(const Contender &contender, int exchanges, const CpuTime &cpuTime,
              Measured &measured) {
  Samples warmUp;
  contender.exchange(1 + exchanges / kWarmUpShare, warmUp);

  Samples samples;
  samples.reserve(static_cast<std::size_t>(exchanges));
  const double start = cpuTime.now();
  contender.exchange(exchanges, samples);
  measured.cpuTimes.push_back((cpuTime.now() - start) / exchanges);
  measured.medians.push_back(samples.quantile(kMedian));
  measured.all.add(samples);
}

} // namespace

nlohmann::json measure(const std::vector<Contender> &contenders, int rounds, int exchanges) {
  const CpuTime cpuTime;
  std::vector<Measured> measured(contenders.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t turn = 0; turn < contenders.size(); ++turn) {
      const std::size_t whose = (turn + static_cast<std::size_t>(round)) % contenders.size();
      takeTurn(contenders[whose], exchanges, cpuTime, measured[whose]);
    }
  }

  nlohmann::json results = nlohmann::json::array();
  for (std::size_t i = 0; i < contenders.size(); ++i) {
    const Samples &all = measured[i].all;
    results.push_back({{"name", contenders[i].name},
                       {"p50", all.quantile(kMedian)},
                       {"p99", all.quantile(kTail)},
                       {"mean", all.mean()},
                       {"rounds", measured[i].medians},
                       {"cpuRounds", measured[i].cpuTimes}});
  }
  return results;
}

} // namespace benchmarks
