// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_LANE_H
#define NORIX_ASSISTANT_MCP_LANE_H

#include "assistant/client/Timer.h"
#include "assistant/mcp/Work.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>

namespace norix::assistant::mcp {

/**
 * @brief The queue in front of one application: one piece of work runs, a few wait.
 * @details The application serves one request at a time, and a newer request replaces the one in
 *          progress without an answer; so the next begins only when the last has ended. Work that
 *          has begun is never taken back: cancelling drops its answer, and the lane stays taken.
 */
class Lane {
public:
  using Ticket = std::uint64_t;

  /// Begins a piece of work, and calls back exactly once when it has ended; never from inside.
  using Run = std::function<void(const Work &, Done)>;

  struct Limits {
    std::size_t waiting = 8; ///< Pieces of work that may wait; more are refused.
    double waitSeconds = 25; ///< How long a caller waits for its work to begin.
  };

  Lane(Limits limits, Run run);

  /**
   * @brief Takes a piece of work; @a done is called once, possibly at once, unless cancelled.
   * @details State reads that wait share one request.
   */
  Ticket submit(Work work, Done done);

  /// Forgets a caller. Work that has not begun and has no other caller never begins.
  void cancel(Ticket ticket);

  /// Whether a piece of work runs.
  bool busy() const { return _running.has_value(); }

  /// Forgets everything that waits; nothing begins any more.
  void close();

private:
  using Clock = std::chrono::steady_clock;

  struct Caller {
    Ticket ticket;
    Done done;
    Clock::time_point received;
    std::unique_ptr<Timer> patience;
  };
  struct Entry {
    Work work;
    std::list<Caller> callers;
    Clock::time_point begun;
  };

  Entry *findShared(const Work &work);
  void addCaller(Entry &entry, Ticket ticket, Done done);
  void beginNext();
  void ended(Outcome outcome);
  std::optional<Caller> take(Ticket ticket);
  void giveUp(Ticket ticket);

  Limits _limits;
  Run _run;
  std::optional<Entry> _running;
  std::list<Entry> _waiting;
  Ticket _lastTicket = 0;
  bool _closed = false;
};

} // namespace norix::assistant::mcp

#endif
