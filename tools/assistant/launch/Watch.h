// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_WATCH_H
#define NORIX_ASSISTANT_LAUNCH_WATCH_H

#include "assistant/launch/sockets.h"
#include "assistant/trace/Event.h"

#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// A look at an application that `launch` started: a greeting, and its events from now on.
class Watch {
public:
  /// None when nobody launched the application.
  static std::optional<Watch> open(const std::string &appId);

  /// Waits until events are there, at most so many milliseconds (-1: without a bound).
  std::vector<trace::Event> read(int milliseconds);

  /// Readable when there are events, or the end.
  int descriptor() const { return _connection.get(); }

  /// Whether the application, or launch, has ended.
  bool hasEnded() const { return _hasEnded; }

private:
  explicit Watch(Descriptor connection) : _connection(std::move(connection)) {}

  Descriptor _connection;
  std::vector<trace::Event> _arrived;
  trace::LineBuffer _lines;
  bool _hasEnded = false;
};

} // namespace norix::assistant::launch

#endif
