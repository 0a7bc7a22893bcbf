// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_LINE_H
#define PLATFORM_DLOG_LINE_H

#include "bounds.h"

#include <dlog.h>

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace platform::dlog {

/// The letters of the priorities, from DLOG_VERBOSE on.
constexpr std::string_view kPriorityLetters = "VDIWEFS";

/// The bytes that one call logs: dlogutil's brief form with the time before it,
/// `MM-DD HH:MM:SS.mmm E/TAG     ( 1234): text`. The header, which is all before the text, is
/// repeated for each line of a text. What a terminal would obey instead of display is escaped:
/// `\x1b`. What goes beyond #kMaxLine is cut off.
class Line {
public:
  /// The priority has to be one from DLOG_VERBOSE to DLOG_FATAL.
  Line(int priority, const char *tag);

  /// False when vsnprintf() cannot follow the format.
  bool format(const char *fmt, va_list ap) __attribute__((format(printf, 2, 0)));

  /// With the newline at the end.
  std::string_view bytes() const { return {_bytes, _size}; }

private:
  void layOut(std::string_view text);
  void addVisible(std::string_view text);
  void add(std::string_view part);

  char _bytes[kMaxLine];
  std::size_t _headerSize = 0;
  std::size_t _size = 0;
};

} // namespace platform::dlog

#endif
