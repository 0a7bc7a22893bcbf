// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_REPORT_H
#define NORIX_ASSISTANT_LAUNCH_REPORT_H

#include "assistant/trace/Event.h"
#include "assistant/trace/Finding.h"
#include "assistant/trace/Timeline.h"

#include <string>

namespace norix::assistant::launch {

/// What the user sees of an application's events: findings, and the time line when it was asked
/// for. As text on standard error, or as JSON lines on standard output.
class Report {
public:
  Report(bool traces, bool isJson) : _traces(traces), _isJson(isJson) {}

  void event(const trace::Event &event);
  void finding(const trace::Event &finding);
  /// A message of this program, about the application.
  void message(const trace::Event &event);

private:
  void write(const trace::Event &event);

  bool _traces;
  bool _isJson;
  trace::Timeline _timeline;
};

/// A finding as an event, for the time line and for watchers: `finding` is its word.
trace::Event toEvent(const trace::Finding &finding);

} // namespace norix::assistant::launch

#endif
