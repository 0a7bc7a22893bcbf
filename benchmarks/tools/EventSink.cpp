// SPDX-License-Identifier: Apache-2.0
#include "tools/EventSink.h"

#include <array>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace benchmarks {

EventSink::EventSink(const std::string &path)
    : _listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  if (bind(_listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
      || listen(_listener.get(), 1) != 0) {
    throw std::runtime_error("cannot listen at " + path);
  }
  _thread = std::thread([this] { receive(); });
}

EventSink::~EventSink() {
  shutdown(_listener.get(), SHUT_RDWR);
  _thread.join();
}

bool EventSink::awaitFirst() const {
  constexpr std::chrono::milliseconds kTick(5);
  constexpr int kMostTicks = 2000;
  for (int ticks = 0; _received == 0 && ticks < kMostTicks; ++ticks) {
    std::this_thread::sleep_for(kTick);
  }
  return _received != 0;
}

void EventSink::receive() {
  constexpr std::size_t kRoom = 65536;
  const support::FileDescriptor connection(accept(_listener.get(), nullptr, nullptr));
  std::array<char, kRoom> bytes{};
  ssize_t count = 0;
  while ((count = read(connection.get(), bytes.data(), bytes.size())) > 0) {
    _received += static_cast<unsigned long>(count);
  }
}

} // namespace benchmarks
