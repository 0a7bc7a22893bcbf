// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_FAILURES_H
#define NORIX_TESTS_INTEGRATION_FAILURES_H

#include "assistant/client/Error.h"

#include <optional>
#include <string>

namespace integration {

// The failure that the assistant's side reports; nothing on success.
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
