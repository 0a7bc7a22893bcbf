// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_LINE_H
#define PLATFORM_DLOG_LINE_H

#include "bounds.h"

#include <dlog.h>

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace platform {

/** The letters of the priorities, from DLOG_VERBOSE on. */
constexpr std::string_view kPriorityLetters = "VDIWEFS";

/**
 * What one call logs: dlogutil's brief form with the time before it,
 * `MM-DD HH:MM:SS.mmm E/TAG     ( 1234): text`. A text of several lines gets the part before the
 * text in front of each; what goes beyond #kMaxLine is cut off.
 */
class Line {
public:
  /** @a priority is one that has a letter. */
  Line(int priority, const char *tag);

  /** False when the format cannot be followed. */
  bool format(const char *fmt, va_list ap) __attribute__((format(printf, 2, 0)));

  /** With the newline at the end. */
  std::string_view bytes() const { return {_bytes, _size}; }

private:
  void spread(std::string_view text);
  void add(std::string_view part);

  char _bytes[kMaxLine];
  std::size_t _headerSize = 0;
  std::size_t _size = 0;
};

} // namespace platform

#endif
