// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Watchers.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::launch {
namespace {

constexpr std::size_t kMostWaiting = std::size_t{8} << 20U;

} // namespace

std::string watchPath(const std::string &appId) {
  return runtimePath(appId, ".watch");
}

Watchers::Watchers(const std::string &appId)
    : _path(watchPath(appId)), _listening(listenAt(_path)) {}

Watchers::~Watchers() {
  if (_listening) {
    unlink(_path.c_str());
  }
}

void Watchers::addTo(std::vector<pollfd> &polled) const {
  if (_listening) {
    polled.push_back({_listening.get(), POLLIN, 0});
  }
  for (const Watcher &watcher : _watchers) {
    const auto writes = static_cast<short>(watcher.waiting.empty() ? 0 : POLLOUT);
    polled.push_back({watcher.connection.get(), static_cast<short>(POLLIN | writes), 0});
  }
}

void Watchers::serve(const std::string &greeting) {
  while (_listening) {
    Descriptor connection = acceptFrom(_listening);
    if (!connection) {
      break;
    }
    _watchers.push_back({std::move(connection), greeting + "\n", false});
  }
  for (Watcher &watcher : _watchers) {
    noticeEnd(watcher);
    sendWaiting(watcher);
  }
  _watchers.remove_if([](const Watcher &watcher) { return watcher.isGone; });
}

void Watchers::send(const std::string &line) {
  for (Watcher &watcher : _watchers) {
    watcher.waiting += line;
    watcher.waiting += '\n';
    sendWaiting(watcher);
  }
}

void Watchers::sendWaiting(Watcher &watcher) {
  while (!watcher.isGone && !watcher.waiting.empty()) {
    const ssize_t sent = ::send(watcher.connection.get(), watcher.waiting.data(),
                                watcher.waiting.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) {
      watcher.waiting.erase(0, static_cast<std::size_t>(sent));
      continue;
    }
    watcher.isGone = errno != EAGAIN || watcher.waiting.size() > kMostWaiting;
    return;
  }
}

// Watchers have nothing to say; reading tells whether they are still there.
void Watchers::noticeEnd(Watcher &watcher) {
  std::array<char, 256> ignored;
  const ssize_t size = recv(watcher.connection.get(), ignored.data(), ignored.size(), MSG_DONTWAIT);
  watcher.isGone = size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR);
}

} // namespace norix::assistant::launch
