// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_EVENT_H
#define NORIX_ASSISTANT_TRACE_EVENT_H

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norix::assistant::trace {

/// Something that happened on either side of an exchange: a line of norix-probe-events(5), or one
/// that the assistant's side made itself.
struct Event {
  /// What happened: "received", "callback-entered", …
  std::string name;
  /// When: CLOCK_MONOTONIC, nanoseconds. The same clock for every process of a machine.
  std::uint64_t time = 0;
  /// Everything, `event` and `t` included.
  nlohmann::json members = nlohmann::json::object();

  /// The member as a text; empty when it is missing or of another type.
  std::string text(const char *member) const;
  /// The member as a number; 0 when it is missing or of another type.
  std::int64_t number(const char *member) const;
  /// Whether the member is `true`.
  bool flag(const char *member) const;
  bool has(const char *member) const { return members.contains(member); }
};

/// Reads one line; nothing when it is not an event.
std::optional<Event> parseEvent(std::string_view line);

/// An event of this side, that happens now.
Event makeEvent(const std::string &name, nlohmann::json members = nlohmann::json::object());

/// CLOCK_MONOTONIC in nanoseconds.
std::uint64_t monotonicNow();

/// Puts the pieces that arrive on a socket together to lines.
class LineBuffer {
public:
  /// A longer line is dropped: no event is nearly as long.
  static constexpr std::size_t kLongestLine = std::size_t{1} << 20U;

  /// Adds what arrived; the lines that are complete now, without their ends.
  std::vector<std::string> add(std::string_view bytes);

private:
  std::string _begun;
  bool _isTooLong = false;
};

} // namespace norix::assistant::trace

#endif
