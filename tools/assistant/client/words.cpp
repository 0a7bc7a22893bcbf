// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/words.h"

#include <array>
#include <utility>

namespace norix::assistant {
namespace {

// The library's own failure messages.
constexpr std::array<std::pair<const char *, const char *>, 4> kMessages{
    {{"Action Execution callback not registered", "action-not-registered"},
     {"Action execution request timed out", "action-timed-out"},
     {"App state request callback not registered", "state-not-registered"},
     {"App state request execution timed out", "state-timed-out"}}};

} // namespace

const char *wordOf(const Response &response) {
  if (response.succeeded()) {
    return "answered";
  }
  for (const auto &[message, word] : kMessages) {
    if (response.statusMessage() == message) {
      return word;
    }
  }
  return "failed";
}

const char *wordOf(Failure failure) {
  switch (failure) {
  case Failure::CannotConnect:
    return "nobody-listens";
  case Failure::Refused:
    return "refused";
  case Failure::NoAnswer:
    return "no-answer";
  case Failure::Disconnected:
    return "connection-lost";
  case Failure::Malformed:
    break;
  }
  return "malformed";
}

} // namespace norix::assistant
