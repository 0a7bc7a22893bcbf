// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_TIMELINE_H
#define NORIX_ASSISTANT_TRACE_TIMELINE_H

#include "assistant/trace/Event.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::trace {

/// Turns events, in the order in which they happened, into lines to read. Texts of the application
/// and of its peers are escaped in them.
class Timeline {
public:
  /// The line of an event, without an end; nothing for one that adds nothing to the others.
  ///
  ///       12.3 ms  callback of musicVolume returned without an answer; the library waits until
  ///                14:03:31
  ///
  /// The time counts from the request that the event belongs to, or from setStart().
  std::optional<std::string> line(const Event &event);

  /// From now on every time counts from this moment, whatever request is in progress.
  void setStart(std::uint64_t time) { _fixedStart = time; }

private:
  struct Request {
    std::string action;
    std::uint64_t start = 0;
    bool isAnswered = false;
  };

  std::string describe(const Event &event);
  std::string describeHello(const Event &event);
  std::string describeReceived(const Event &event);
  std::string describeEntered(const Event &event) const;
  std::string describeLeft(const Event &event);
  std::string describeCall(const Event &event);
  std::string describeInitialize(const Event &event);
  std::string describeAnswer(const Event &event);
  std::string describeLog(const Event &event);
  std::string describeOwn(const Event &event) const;
  std::string deadline() const;
  std::string localTime(std::uint64_t time) const;

  std::optional<std::uint64_t> _fixedStart;
  // The request in progress.
  Request _request;
  std::uint64_t _waitNanoseconds = 30000000000;
  std::string _sender;
};

/// The lines of these events, counted from the first of them.
std::vector<std::string> toLines(const std::vector<Event> &events);

} // namespace norix::assistant::trace

#endif
