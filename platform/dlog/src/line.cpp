// SPDX-License-Identifier: Apache-2.0
#include "line.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

namespace platform {

Line::Line(int priority, const char *tag) {
  timespec now{};
  tm local{};
  clock_gettime(CLOCK_REALTIME, &now);
  localtime_r(&now.tv_sec, &local);

  const int size = std::snprintf(
      _bytes, kMaxLine, "%02d-%02d %02d:%02d:%02d.%03ld %c/%-8.*s(%5d): ", local.tm_mon + 1,
      local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000,
      kPriorityLetters[static_cast<std::size_t>(priority - DLOG_VERBOSE)], kMaxTag, tag, getpid());
  _headerSize = static_cast<std::size_t>(size);
  _size = _headerSize;
}

bool Line::format(const char *fmt, va_list ap) {
  const std::size_t room = kMaxLine - _headerSize; // the NUL's place becomes the newline's
  const int wanted = std::vsnprintf(_bytes + _headerSize, room, fmt, ap);
  if (wanted < 0) {
    return false;
  }

  std::string_view text(_bytes + _headerSize, std::min(static_cast<std::size_t>(wanted), room - 1));
  if (!text.empty() && text.back() == '\n') {
    text.remove_suffix(1);
  }
  if (text.find('\n') != std::string_view::npos) {
    spread(text);
    return true;
  }
  _bytes[_headerSize + text.size()] = '\n';
  _size = _headerSize + text.size() + 1;
  return true;
}

void Line::spread(std::string_view text) {
  char copy[kMaxLine];
  std::memcpy(copy, text.data(), text.size());
  text = {copy, text.size()};

  _size = 0;
  while (_size + _headerSize < kMaxLine) {
    const std::size_t end = text.find('\n');
    add({_bytes, _headerSize});
    add(text.substr(0, std::min(end, kMaxLine - _size - 1)));
    add("\n");
    if (end == std::string_view::npos) {
      return;
    }
    text.remove_prefix(end + 1);
  }
}

/** The first header is copied onto itself: it stands where it belongs. */
void Line::add(std::string_view part) {
  std::memmove(_bytes + _size, part.data(), part.size());
  _size += part.size();
}

} // namespace platform
