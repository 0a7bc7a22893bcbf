// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/Event.h"

#include <ctime>
#include <utility>

namespace norix::assistant::trace {

using nlohmann::json;

std::string Event::text(const char *member) const {
  const auto found = members.find(member);
  return found != members.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::int64_t Event::number(const char *member) const {
  const auto found = members.find(member);
  return found != members.end() && found->is_number_integer() ? found->get<std::int64_t>() : 0;
}

bool Event::flag(const char *member) const {
  const auto found = members.find(member);
  return found != members.end() && found->is_boolean() && found->get<bool>();
}

std::optional<Event> parseEvent(std::string_view line) {
  Event event;
  event.members = json::parse(line, nullptr, false);
  if (!event.members.is_object()) {
    return std::nullopt;
  }
  event.name = event.text("event");
  event.time = static_cast<std::uint64_t>(event.number("t"));
  return event.name.empty() ? std::nullopt : std::optional<Event>(std::move(event));
}

Event makeEvent(const std::string &name, json members) {
  Event event{name, monotonicNow(), std::move(members)};
  event.members["event"] = name;
  event.members["t"] = event.time;
  return event;
}

std::uint64_t monotonicNow() {
  constexpr std::uint64_t kNanoseconds = 1000000000;
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kNanoseconds
         + static_cast<std::uint64_t>(now.tv_nsec);
}

std::vector<std::string> LineBuffer::add(std::string_view bytes) {
  std::vector<std::string> lines;
  for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
    _begun.append(bytes.substr(0, end));
    if (!_isTooLong) {
      lines.push_back(std::move(_begun));
    }
    _begun.clear();
    _isTooLong = false;
    bytes.remove_prefix(end + 1);
  }
  _begun.append(bytes);
  if (_begun.size() > kLongestLine) {
    _begun.clear();
    _isTooLong = true;
  }
  return lines;
}

} // namespace norix::assistant::trace
