// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/nearest.h"

#include "assistant/trace/checks.h"

namespace norix::assistant::actions {
namespace {

// No name that is known is nearly as long; the distance costs the product of two lengths.
constexpr std::size_t kLongest = 256;

} // namespace

std::string nearest(const std::string &name, const std::vector<std::string> &known) {
  if (name.size() > kLongest) {
    return {};
  }
  std::string best;
  std::size_t least = kLongest;
  for (const std::string &candidate : known) {
    const std::size_t letters = trace::editDistance(name, candidate);
    if (letters < least && letters * 3 <= candidate.size()) {
      best = candidate;
      least = letters;
    }
  }
  return best;
}

std::string suggestion(const std::string &name, const std::vector<std::string> &known) {
  const std::string meant = nearest(name, known);
  return meant.empty() ? "" : ", did you mean '" + meant + "'?";
}

} // namespace norix::assistant::actions
