// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_EXCHANGETRACE_H
#define NORIX_ASSISTANT_LAUNCH_EXCHANGETRACE_H

#include "assistant/launch/Watch.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// What happens on both sides of one exchange: the steps of this side, and, when the application
/// was launched, those of the application in between, by time.
class ExchangeTrace {
public:
  /// The probe sends in pieces, some 20 ms apart.
  static constexpr int kForAnswered = 400;

  /// Looks at the application from now on.
  explicit ExchangeTrace(const std::string &appId);

  /// A step of this side that was done just now.
  void note(const std::string &says);

  /// Everything, in order, once the application's side of the request has arrived.
  ///
  /// @param requestId     the request
  /// @param milliseconds  how long to wait for it; long enough, by default, for one that was
  /// answered
  std::vector<trace::Event> finish(std::uint64_t requestId, int milliseconds = kForAnswered);

  /// Whether the application's side is missing.
  bool isOneSided() const { return !_watch.has_value(); }

private:
  void readUntilAnswered(const std::string &requestId, int milliseconds);

  std::optional<Watch> _watch;
  std::vector<trace::Event> _events;
};

} // namespace norix::assistant::launch

#endif
