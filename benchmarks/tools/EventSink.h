// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_TOOLS_EVENTSINK_H
#define NORIX_BENCHMARKS_TOOLS_EVENTSINK_H

#include "support/FileDescriptor.h"

#include <atomic>
#include <string>
#include <thread>

namespace benchmarks {

/** @brief Takes what one probe reports, and forgets it. */
class EventSink {
public:
  /** @brief Listens at that path, on a thread of its own. */
  explicit EventSink(const std::string &path);
  /** @brief Hangs up. */
  ~EventSink();
  EventSink(const EventSink &) = delete;
  EventSink &operator=(const EventSink &) = delete;

  /** @brief Waits for the first byte. @return false when none came within ten seconds. */
  bool awaitFirst() const;
  /** @brief How many bytes came so far. */
  unsigned long received() const { return _received; }

private:
  void receive();

  support::FileDescriptor _listener;
  std::atomic<unsigned long> _received{0};
  std::thread _thread;
};

} // namespace benchmarks

#endif
