// SPDX-License-Identifier: Apache-2.0
#include "fakes/Faults.h"

namespace fake {

void Faults::fail(const std::string &function, int nth, int result) {
  _results[{function, _calls[function] + nth}] = result;
}

void Faults::failAlways(const std::string &function, int result) {
  _always[function] = result;
}

std::optional<int> Faults::next(const std::string &function) {
  const int number = ++_calls[function];
  if (const auto found = _results.find({function, number}); found != _results.end()) {
    return found->second;
  }
  if (const auto found = _always.find(function); found != _always.end()) {
    return found->second;
  }
  return std::nullopt;
}

} // namespace fake
