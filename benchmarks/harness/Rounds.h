// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_ROUNDS_H
#define NORIX_BENCHMARKS_HARNESS_ROUNDS_H

#include "harness/Samples.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace benchmarks {

/** @brief One of those that are compared with each other. */
struct Contender {
  std::string name;
  /** Makes so many exchanges one after the other, and adds the time of each. */
  std::function<void(int count, Samples &samples)> exchange;
};

/**
 * @brief Measures contenders in rounds, each of which gives everyone a turn.
 * @details What disturbs a machine for a while disturbs a whole round: the ratios within a round
 *          are steady where the times are not. Every round begins with another contender, and each
 *          turn with exchanges that do not count.
 * @return Per contender its name, "p50", "p99" and "mean" over all exchanges and, for each round,
 *         the median ("rounds") and the CPU time of all processes per exchange ("cpuRounds"); in
 *         nanoseconds
 */
nlohmann::json measure(const std::vector<Contender> &contenders, int rounds, int exchanges);

} // namespace benchmarks

#endif
