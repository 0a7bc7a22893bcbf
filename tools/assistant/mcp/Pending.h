// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_PENDING_H
#define NORIX_ASSISTANT_MCP_PENDING_H

#include "assistant/client/Timer.h"
#include "assistant/mcp/Server.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace norix::assistant::mcp {

/// Calls a function at a steady interval, with 1, 2, 3 …
class Heartbeat {
public:
  Heartbeat(double seconds, std::function<void(int)> beat)
      : _seconds(seconds), _beat(std::move(beat)) {
    rearm();
  }

private:
  void rearm() {
    _timer = std::make_unique<Timer>(_seconds, [this] { beat(); });
  }
  void beat() {
    rearm();
    _beat(++_count);
  }

  double _seconds;
  std::function<void(int)> _beat;
  int _count = 0;
  std::unique_ptr<Timer> _timer;
};

/// A request whose answer comes later. Destroying it ends its timers.
struct Server::Pending {
  std::function<void()> cancel; ///< What else is to be forgotten; may be empty.
  std::optional<Heartbeat> heartbeat;
  std::string question; ///< The id of the question to the user, while there is one.
  std::function<void(const Json &)> userAnswered;
  std::unique_ptr<Timer> patience; ///< Ends the wait for the user.
};

} // namespace norix::assistant::mcp

#endif
