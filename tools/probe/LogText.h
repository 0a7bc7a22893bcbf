// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_LOGTEXT_H
#define NORIX_PROBE_LOGTEXT_H

#include "probe/Record.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace norix::probe {

/// The text of a log line, from its format and its arguments. What is too long for an event is left
/// out.
class LogText {
public:
  LogText(const char *format, va_list arguments);

  std::string_view view() const { return {_bytes.data(), _size}; }

private:
  /// Arguments that move on: a va_list is an array, which cannot be passed by reference.
  struct Arguments {
    va_list list;
  };

  bool writeSimply(const char *format, Arguments &arguments);
  void writeAnything(const char *format, va_list arguments);
  void add(const char *from, std::size_t size);
  void addText(const char *text);
  void addAddress(const void *address);
  template <typename Number>
  void addNumber(Number number, int base);

  // The last byte is for the NUL of vsnprintf(). Not initialised: several are made per request.
  std::array<char, Record::kLongestText + 1> _bytes;
  std::size_t _size = 0;
};

} // namespace norix::probe

#endif
