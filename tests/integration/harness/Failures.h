// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_FAILURES_H
#define NORIX_TESTS_INTEGRATION_FAILURES_H

#include "assistant/client/Error.h"

#include <optional>
#include <string>

namespace integration {

// How the assistant's side fails; nothing when it does not.
template <typename Attempt>
std::optional<norix::assistant::Failure> failureOf(Attempt attempt) {
  try {
    attempt();
  } catch (const norix::assistant::Error &error) {
    return error.failure();
  }
  return std::nullopt;
}

// What it says; empty when it does not fail.
template <typename Attempt>
std::string messageOf(Attempt attempt) {
  try {
    attempt();
  } catch (const norix::assistant::Error &error) {
    return error.what();
  }
  return {};
}

} // namespace integration

#endif
