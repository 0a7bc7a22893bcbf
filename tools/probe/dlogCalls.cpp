// SPDX-License-Identifier: Apache-2.0
//
// dlog_print() and dlog_vprint(): each line is passed on, and reported in its parts.
#include "probe/LogText.h"
#include "probe/Reporter.h"
#include "probe/real.h"

#include <dlog.h>

#include <cstdarg>
#include <cstring>
#include <string_view>

using norix::probe::kDlogLibrary;

namespace real {
// The header's own type carries attributes, which a template argument must not have.
using Print = int(log_priority, const char *, const char *, va_list);
norix::probe::Real<Print> dlog_vprint("dlog_vprint", kDlogLibrary);
} // namespace real

namespace norix::probe {
namespace {

// What the lines of the library and of its channel begin with.
constexpr std::string_view kLibraryPrefix = "%s %s %s(%d): ";
constexpr std::string_view kChannelPrefix = "%s: %s(%d) > ";

bool beginsWith(const char *format, std::string_view prefix) {
  return std::strncmp(format, prefix.data(), prefix.size()) == 0;
}

/// Arguments of a format, one after the other.
struct Arguments {
  va_list list;
};

// Takes file, function and line out of the arguments; what is left of the format.
const char *readPlace(Record &log, const char *format, Arguments &arguments) {
  const bool isLibrary = beginsWith(format, kLibraryPrefix);
  if (!isLibrary && !beginsWith(format, kChannelPrefix)) {
    return format;
  }
  if (isLibrary) {
    (void)va_arg(arguments.list, const char *); // The version, the same in every line.
  }
  log.constant(Field::File, va_arg(arguments.list, const char *));
  log.constant(Field::Function, va_arg(arguments.list, const char *));
  log.number(Field::Line, va_arg(arguments.list, int));
  return format + (isLibrary ? kLibraryPrefix : kChannelPrefix).size();
}

void readText(Record &log, const char *format, Arguments &arguments) {
  const char *const mark = strchrnul(format, '%');
  if (*mark == '\0') {
    log.constant(Field::Text, format);
  } else if (mark == format && std::strcmp(format, "%s") == 0) {
    log.text(Field::Text, va_arg(arguments.list, const char *));
  } else {
    const LogText text(format, arguments.list);
    log.text(Field::Text, text.view());
  }
}

void reportLine(int priority, const char *tag, const char *format, va_list list) {
  if (!isReporting() || tag == nullptr || format == nullptr) {
    return;
  }
  Arguments arguments;
  va_copy(arguments.list, list);
  Record log(EventKind::Log);
  log.number(Field::Priority, priority).constant(Field::Tag, tag);
  const char *const rest = readPlace(log, format, arguments);
  readText(log, rest, arguments);
  va_end(arguments.list);
  report(log);
}

} // namespace
} // namespace norix::probe

NORIX_PROBE_EXPORT int dlog_vprint(log_priority prio, const char *tag, const char *fmt,
                                   va_list ap) {
  norix::probe::reportLine(prio, tag, fmt, ap);
  return real::dlog_vprint(prio, tag, fmt, ap);
}

NORIX_PROBE_EXPORT int dlog_print(log_priority prio, const char *tag, const char *fmt, ...) {
  va_list arguments;
  va_start(arguments, fmt);
  const int result = dlog_vprint(prio, tag, fmt, arguments);
  va_end(arguments);
  return result;
}
