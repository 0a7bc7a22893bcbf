// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_DEADLINE_H
#define PLATFORM_RPC_PORT_COMMON_DEADLINE_H

#include <chrono>

namespace platform::rpc_port {

/// A point in time that bounds a wait.
class Deadline {
public:
  explicit Deadline(double seconds) : _end(Clock::now() + toDuration(seconds)) {}

  double secondsLeft() const { return std::chrono::duration<double>(_end - Clock::now()).count(); }
  bool isOver() const { return secondsLeft() <= 0; }

private:
  using Clock = std::chrono::steady_clock;

  static Clock::duration toDuration(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  }

  Clock::time_point _end;
};

} // namespace platform::rpc_port

#endif
