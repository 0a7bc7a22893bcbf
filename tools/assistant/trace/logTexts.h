// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_LOGTEXTS_H
#define NORIX_ASSISTANT_TRACE_LOGTEXTS_H

#include "assistant/trace/Event.h"

#include <string>

namespace norix::assistant::trace {

/// What a line of the library's log says about a request. The texts are a contract of the library,
/// so they can be relied on.
enum class LogKind {
  Connected,     ///< detail: the sender's app id
  Sender,        ///< a request comes; detail: the sender's app id
  SetCallback,   ///< the assistant gave a delegate for the answers
  Disconnected,  ///< a connection ended
  AllowList,     ///< the list is read; detail: its path
  NotPermitted,  ///< detail: the sender's app id
  Parked,        ///< no callback yet: the request waits for its registration
  NotRegistered, ///< no callback: the library answers with a failure
  TimedOut,      ///< no answer: the library answers with a failure
  NotDelivered,  ///< the response did not get to the assistant
  Other
};

struct LogMeaning {
  LogKind kind = LogKind::Other;
  std::string detail;
};

LogMeaning meaningOf(const Event &log);

/// Whether the line is one of libnorix.so, and not of the application or the platform.
bool isLibrarysOwn(const Event &log);

} // namespace norix::assistant::trace

#endif
