// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_SAMPLES_H
#define NORIX_BENCHMARKS_HARNESS_SAMPLES_H

#include <chrono>
#include <vector>

namespace benchmarks {

/** @brief How long each of a number of exchanges took, in nanoseconds. */
class Samples {
public:
  using Clock = std::chrono::steady_clock;

  void reserve(std::size_t count) { _nanoseconds.reserve(count); }
  /** @brief Adds what has passed since then, and returns the present. */
  Clock::time_point addSince(Clock::time_point start);
  void add(const Samples &other);
  void addNanoseconds(double value) { _nanoseconds.push_back(value); }

  std::size_t count() const { return _nanoseconds.size(); }
  double mean() const;
  /** @brief The value that this part of all samples does not exceed: 0.5 is the median. */
  double quantile(double part) const;

private:
  std::vector<double> _nanoseconds;
};

} // namespace benchmarks

#endif
