// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Watch.h"

#include "assistant/launch/Watchers.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace norix::assistant::launch {
namespace {

// The launcher greets at once, unless it is stopped.
constexpr int kTimeToGreet = 500;

} // namespace

// A launcher passes on what happens after its greeting, and what happened before is lost.
std::optional<Watch> Watch::open(const std::string &appId) {
  Descriptor connection = connectTo(watchPath(appId));
  if (!connection) {
    return std::nullopt;
  }
  Watch watch(std::move(connection));
  watch._arrived = watch.read(kTimeToGreet);
  return watch;
}

std::vector<trace::Event> Watch::read(int milliseconds) {
  constexpr std::size_t kChunk = 65536;
  if (!_arrived.empty()) {
    return std::exchange(_arrived, {});
  }
  pollfd polled = {_connection.get(), POLLIN, 0};
  std::vector<trace::Event> events;
  if (poll(&polled, 1, milliseconds) <= 0) {
    return events;
  }
  std::array<char, kChunk> bytes;
  const ssize_t size = recv(_connection.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (size <= 0) {
    _hasEnded = size == 0 || (errno != EAGAIN && errno != EINTR);
    return events;
  }
  for (const std::string &line : _lines.add({bytes.data(), static_cast<std::size_t>(size)})) {
    if (std::optional<trace::Event> event = trace::parseEvent(line)) {
      events.push_back(std::move(*event));
    }
  }
  return events;
}

} // namespace norix::assistant::launch
