// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Watch.h"

#include "assistant/launch/Watchers.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace norix::assistant::launch {

std::optional<Watch> Watch::open(const std::string &appId) {
  Descriptor connection = connectTo(watchPath(appId));
  return connection ? std::optional<Watch>(Watch(std::move(connection))) : std::nullopt;
}

std::vector<trace::Event> Watch::read(int milliseconds) {
  constexpr std::size_t kChunk = 65536;
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
