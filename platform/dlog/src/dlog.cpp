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

// When the library is loaded, before the application opens anything that would get the number of
// standard error if that is closed.
[[gnu::constructor]] void protectStandardStreams() {
  platform::occupyStandardStreams();
}

struct Log {
  Log(const char *filterWords, const char *path)
      : filter(filterWords != nullptr ? filterWords : ""), destination(path) {}

  Filter filter;
  Destination destination;
};

// Room for a log that nobody destroys: constructors and destructors of static objects log, too.
union LogRoom {
  constexpr LogRoom() : empty(0) {}
  LogRoom(const LogRoom &) = delete;
  LogRoom &operator=(const LogRoom &) = delete;
  ~LogRoom() {}

  char empty;
  Log log;
};

// In static memory rather than behind a pointer: a dropped line gets at it for nothing.
LogRoom room;

// Every line from this priority on has to go the whole way: all lines until there is a log.
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

// Restores errno, which a log line in front of an error check must not disturb.
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

// secure_getenv: a program that runs with more rights than its caller opens no file for him.
const Log *openLog() {
  const ErrnoKeeper keeper;
  const auto *log = new (&room.log) Log(secure_getenv("DLOG_FILTER"), secure_getenv("DLOG_FILE"));
  complain(*log);
  quickHighest.store(log->filter.highest(), std::memory_order_release);
  return log;
}

// The process's log, made by its first line; null as long as there is no memory for it.
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

// Whether the filter is known to drop this line. Inline, and all that such a line costs.
inline bool isDropped(log_priority prio, const char *tag, const char *fmt) {
  return prio < quickHighest.load(std::memory_order_acquire) && fmt != nullptr && tag != nullptr
         && room.log.filter.drops(prio, tag);
}

int writeLine(const Log &log, log_priority prio, const char *tag, const char *fmt, va_list ap)
    __attribute__((format(printf, 4, 0)));

int writeLine(const Log &log, log_priority prio, const char *tag, const char *fmt, va_list ap) {
  const ErrnoKeeper keeper;
  Line line(prio, tag);
  keeper.restore(); // %m shows the caller's
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
