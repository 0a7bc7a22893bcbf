// SPDX-License-Identifier: Apache-2.0
#include "fakes/Journal.h"

#include <algorithm>

namespace fake {

void Journal::add(std::string_view function, std::string arguments) {
  _calls.push_back({std::string(function), std::move(arguments)});
}

std::vector<std::string> Journal::of(std::initializer_list<std::string_view> functions) const {
  std::vector<std::string> found;
  for (const Call &call : _calls) {
    if (std::find(functions.begin(), functions.end(), call.function) != functions.end()) {
      found.push_back(call.text());
    }
  }
  return found;
}

int Journal::count(std::string_view function) const {
  return static_cast<int>(std::count_if(_calls.begin(), _calls.end(), [function](const Call &call) {
    return call.function == function;
  }));
}

} // namespace fake
