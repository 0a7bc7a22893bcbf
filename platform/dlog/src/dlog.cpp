// SPDX-License-Identifier: Apache-2.0
#include <dlog.h>

#include "destination.h"
#include "filter.h"
#include "line.h"

#include <standardStreams.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <new>
#include <string>

using platform::dlog::Destination;
using platform::dlog::Filter;
using platform::dlog::Line;

namespace {

// Runs when the library is loaded, before the application opens a descriptor. If standard error is
// closed, that descriptor would get its number.
[[gnu::constructor]] void protectStandardStreams() {
  platform::occupyStandardStreams();
}

struct Log {
  Log(const char *filterWords, const char *path)
      : filter(filterWords != nullptr ? filterWords : ""), destination(path) {}

  Filter filter;
  Destination destination;
};

// Storage of the log, which is never destroyed: destructors of static objects log, too.
union LogRoom {
  constexpr LogRoom() : empty(0) {}
  LogRoom(const LogRoom &) = delete;
  LogRoom &operator=(const LogRoom &) = delete;
  ~LogRoom() {}

  char empty;
  Log log;
};

// Static memory instead of a pointer: saves a dropped line one load.
LogRoom room;

// Lines below this priority may be dropped by the fast path: none before the log is open.
std::atomic<int> quickHighest{INT_MIN};

void complain(const Log &log) {
  std::string text;
  if (!log.filter.refusedWords().empty()) {
    text.append("dlog: DLOG_FILTER: ignoring ").append(log.filter.refusedWords());
    text.append(": a word is TAG, TAG:PRIORITY or *:PRIORITY, and the priority V, D, I, W, E, F "
                "or S\n");
  }
  if (!log.destination.complaint().empty()) {
    text.append("dlog: DLOG_FILE: ").append(log.destination.complaint());
    text.append(": the log goes to standard error\n");
  }
  platform::dlog::writeToStandardError(text);
}

// Restores errno: a log line may precede the check of an error.
class ErrnoKeeper {
public:
  ErrnoKeeper() = default;
  ErrnoKeeper(const ErrnoKeeper &) = delete;
  ErrnoKeeper &operator=(const ErrnoKeeper &) = delete;
  ~ErrnoKeeper() { restore(); }

  void restore() const { errno = _kept; }

private:
  int _kept = errno;
};

const char *orEmpty(const char *text) {
  return text != nullptr ? text : "";
}

// secure_getenv: a set-user-id program must not open files that its caller names.
const Log *openLog() {
  const ErrnoKeeper keeper;
  const auto *log = new (&room.log) Log(secure_getenv("DLOG_FILTER"), secure_getenv("DLOG_FILE"));
  complain(*log);
  quickHighest.store(log->filter.highest(), std::memory_order_release);
  return log;
}

// The log of the process, opened by its first line; null without memory.
const Log *theLog() noexcept {
  try {
    static const Log *const log = openLog();
    return log;
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

bool isLoggable(log_priority prio) {
  return prio >= DLOG_VERBOSE && prio <= DLOG_FATAL;
}

// The fast path: whether the filter drops this line. Inline, because it is all that such a line
// costs.
inline bool isDropped(log_priority prio, const char *tag, const char *fmt) {
  return prio < quickHighest.load(std::memory_order_acquire) && fmt != nullptr && tag != nullptr
         && room.log.filter.drops(prio, tag);
}

int writeLine(const Log &log, log_priority prio, const char *tag, const char *fmt, va_list ap)
    __attribute__((format(printf, 4, 0)));

int writeLine(const Log &log, log_priority prio, const char *tag, const char *fmt, va_list ap) {
  const ErrnoKeeper keeper;
  Line line(prio, tag);
  keeper.restore(); // for %m
  if (!line.format(fmt, ap)) {
    return DLOG_ERROR_INVALID_PARAMETER;
  }
  if (!log.destination.write(line.bytes())) {
    return DLOG_ERROR_NOT_PERMITTED;
  }
  return static_cast<int>(line.bytes().size());
}

int print(log_priority prio, const char *tag, const char *fmt, va_list ap)
    __attribute__((format(printf, 3, 0), noinline));

int print(log_priority prio, const char *tag, const char *fmt, va_list ap) {
  if (fmt == nullptr || !isLoggable(prio)) {
    return DLOG_ERROR_INVALID_PARAMETER;
  }
  const Log *log = theLog();
  if (log == nullptr) {
    return DLOG_ERROR_NOT_PERMITTED;
  }

  tag = orEmpty(tag);
  const bool dropped = prio < log->filter.highest() && log->filter.drops(prio, tag);
  return dropped ? 0 : writeLine(*log, prio, tag, fmt, ap);
}

} // namespace

int dlog_print(log_priority prio, const char *tag, const char *fmt, ...) {
  if (isDropped(prio, tag, fmt)) {
    return 0;
  }
  va_list ap;
  va_start(ap, fmt);
  const int result = print(prio, tag, fmt, ap);
  va_end(ap);
  return result;
}

int dlog_vprint(log_priority prio, const char *tag, const char *fmt, va_list ap) {
  return isDropped(prio, tag, fmt) ? 0 : print(prio, tag, fmt, ap);
}
