// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_FAULT_SWEEP_H
#define NORIX_TESTS_FAULT_SWEEP_H

#include "fakes/LibraryTest.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// Fails each platform call and each non-throwing allocation of a road in turn, once, each time in
/// a fresh library, and compares the outcome.

/// What is seen of a road from outside.
struct Outcome {
  /// Of the last call; nothing when an exception came out.
  std::optional<int> result;
  std::string lastLog;
  /// Requests that reached the application, results and responses that reached the assistant.
  size_t handed = 0;
  size_t results = 0;
  size_t responses = 0;
};

bool operator==(const Outcome &one, const Outcome &other);
void PrintTo(const Outcome &outcome, std::ostream *out);

struct Road {
  /// Up to the road's beginning; nothing fails there.
  std::function<void(fake::App &, fake::Assistant &)> prepare;
  std::function<int(fake::App &, fake::Assistant &)> run;
  std::vector<fake::DeliberateLeak> leaks = {};
};

/// What the failure of one call changes. A call without an effect changes nothing.
struct Effect {
  std::string function;
  int nth;
  std::function<void(Outcome &)> change;
  std::vector<fake::DeliberateLeak> leaks = {};
  /// Leaks of the road that do not happen then.
  bool leavesNothing = false;
};

/// An effect for a call that the road does not make is a mistake of the test, and fails it.
void sweep(const Road &road, const std::vector<Effect> &effects);

#endif
