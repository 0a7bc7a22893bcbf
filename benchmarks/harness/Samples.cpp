// SPDX-License-Identifier: Apache-2.0
#include "harness/Samples.h"

#include <algorithm>
#include <numeric>

namespace benchmarks {

Samples::Clock::time_point Samples::addSince(Clock::time_point start) {
  const Clock::time_point now = Clock::now();
  addNanoseconds(std::chrono::duration<double, std::nano>(now - start).count());
  return now;
}

void Samples::add(const Samples &other) {
  _nanoseconds.insert(_nanoseconds.end(), other._nanoseconds.begin(), other._nanoseconds.end());
}

double Samples::mean() const {
  const double sum = std::accumulate(_nanoseconds.begin(), _nanoseconds.end(), 0.0);
  return _nanoseconds.empty() ? 0.0 : sum / static_cast<double>(_nanoseconds.size());
}

double Samples::quantile(double part) const {
  if (_nanoseconds.empty()) {
    return 0.0;
  }
  std::vector<double> sorted = _nanoseconds;
  const auto last = static_cast<double>(sorted.size() - 1);
  const auto place = sorted.begin() + static_cast<std::ptrdiff_t>(last * part);
  std::nth_element(sorted.begin(), place, sorted.end());
  return *place;
}

} // namespace benchmarks
