// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/registered.h"

#include "assistant/client/Request.h"
#include "assistant/launch/Watchers.h"
#include "assistant/trace/Event.h"

#include <array>
#include <poll.h>
#include <sys/socket.h>

namespace norix::assistant::launch {
namespace {

// The launcher greets at once, unless it is stopped.
constexpr int kMilliseconds = 500;

// The first line on a connection.
std::optional<trace::Event> readGreeting(const Descriptor &connection) {
  trace::LineBuffer lines;
  pollfd watched{connection.get(), POLLIN, 0};
  while (poll(&watched, 1, kMilliseconds) > 0) {
    std::array<char, 4096> chunk{};
    const ssize_t count = recv(connection.get(), chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (count <= 0) {
      break;
    }
    const auto complete = lines.add({chunk.data(), static_cast<size_t>(count)});
    if (!complete.empty()) {
      return trace::parseEvent(complete.front());
    }
  }
  return std::nullopt;
}

} // namespace

std::optional<std::set<std::string>> registeredActions(const std::string &appId) {
  const Descriptor connection = connectTo(watchPath(appId));
  const auto greeting = connection ? readGreeting(connection) : std::nullopt;
  if (!greeting || !greeting->has("registered") || !greeting->members["registered"].is_array()) {
    return std::nullopt;
  }
  std::set<std::string> ids;
  for (const auto &id : greeting->members["registered"]) {
    if (id.is_string() && id != kStateActionId) {
      ids.insert(id.get<std::string>());
    }
  }
  return ids;
}

Drift compare(const actions::Declarations &declared, const std::set<std::string> &registered) {
  Drift drift;
  for (const actions::Action &action : declared.actions) {
    if (registered.count(action.id) == 0) {
      drift.notRegistered.push_back(action.id);
    }
  }
  for (const std::string &id : registered) {
    if (declared.find(id) == nullptr) {
      drift.notDeclared.push_back(id);
    }
  }
  return drift;
}

} // namespace norix::assistant::launch
