// SPDX-License-Identifier: Apache-2.0
#include "probe/LogText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace norix::probe {

LogText::LogText(const char *format, va_list arguments) {
  Arguments simple;
  va_copy(simple.list, arguments);
  if (!writeSimply(format, simple)) {
    writeAnything(format, arguments);
  }
  va_end(simple.list);
}

// The lines of the library have texts, numbers and addresses in them, for which vsnprintf() takes
// ten times as long. False for a format with anything else.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized): the analyzer loses sight of a list in a struct.
bool LogText::writeSimply(const char *format, Arguments &arguments) {
  while (true) {
    const char *const mark = strchrnul(format, '%');
    add(format, static_cast<std::size_t>(mark - format));
    if (*mark == '\0') {
      return true;
    }
    if (mark[1] == 's') {
      addText(va_arg(arguments.list, const char *));
    } else if (mark[1] == 'd') {
      addNumber(va_arg(arguments.list, int), 10);
    } else if (mark[1] == 'p') {
      addAddress(va_arg(arguments.list, const void *));
    } else {
      return false;
    }
    format = mark + 2;
  }
}
// NOLINTEND(clang-analyzer-valist.Uninitialized)

void LogText::writeAnything(const char *format, va_list arguments) {
  const int length = std::vsnprintf(_bytes.data(), _bytes.size(), format, arguments);
  _size = std::min(static_cast<std::size_t>(std::max(length, 0)), _bytes.size() - 1);
}

void LogText::add(const char *from, std::size_t size) {
  const std::size_t fitting = std::min(size, _bytes.size() - 1 - _size);
  std::memcpy(&_bytes[_size], from, fitting);
  _size += fitting;
}

void LogText::addText(const char *text) {
  const char *const shown = text != nullptr ? text : "(null)";
  add(shown, strnlen(shown, Record::kLongestText));
}

void LogText::addAddress(const void *address) {
  if (address == nullptr) {
    addText("(nil)");
    return;
  }
  addText("0x");
  addNumber(reinterpret_cast<std::uintptr_t>(address), 16);
}

template <typename Number>
void LogText::addNumber(Number number, int base) {
  std::array<char, 24> digits;
  const char *const end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
  add(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

} // namespace norix::probe
