// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_TRACING_H
#define NORIX_ASSISTANT_CLI_TRACING_H

#include "assistant/cli/Console.h"
#include "assistant/launch/ExchangeTrace.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// The --trace of an exchange; does nothing without the option. Any thread may call it: the time
/// line is wanted most when the watchdog ends an exchange that hangs.
class Tracing {
public:
  Tracing(bool isWanted, const std::string &appId, std::uint64_t requestId);

  /// A step that was done just now.
  void note(const std::string &says);
  /// Writes the time line to standard error, once.
  void show();
  /// The events, for --json, once they were shown.
  void addTo(Json &facts);

private:
  std::uint64_t _requestId;
  std::mutex _mutex;
  std::optional<launch::ExchangeTrace> _trace;
  bool _isWanted;
  std::vector<trace::Event> _shown;
};

} // namespace norix::assistant::cli

#endif
