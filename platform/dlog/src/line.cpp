// SPDX-License-Identifier: Apache-2.0
#include "line.h"

#include "visible.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

namespace platform::dlog {

Line::Line(int priority, const char *tag) {
  timespec now{};
  tm local{};
  clock_gettime(CLOCK_REALTIME, &now);
  localtime_r(&now.tv_sec, &local);

  char header[kMaxTag + 64]; // the other parts have some 40 bytes
  const int size = std::snprintf(
      header, sizeof header, "%02d-%02d %02d:%02d:%02d.%03ld %c/%-8.*s(%5d): ", local.tm_mon + 1,
      local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000,
      kPriorityLetters[static_cast<std::size_t>(priority - DLOG_VERBOSE)], kMaxTag, tag, getpid());
  addVisible({header, static_cast<std::size_t>(size)});
  _headerSize = _size;
}

bool Line::format(const char *fmt, va_list ap) {
  const std::size_t room =
      kMaxLine - _headerSize; // with a byte for the NUL, which the newline replaces
  const int wanted = std::vsnprintf(_bytes + _headerSize, room, fmt, ap);
  if (wanted < 0) {
    return false;
  }

  std::string_view text(_bytes + _headerSize, std::min(static_cast<std::size_t>(wanted), room - 1));
  if (!text.empty() && text.back() == '\n') {
    text.remove_suffix(1);
  }
  if (!isPlain(text)) {
    layOut(text);
    return true;
  }
  _size = _headerSize + text.size();
  add("\n");
  return true;
}

void Line::layOut(std::string_view text) {
  char copy[kMaxLine];
  std::memcpy(copy, text.data(), text.size());
  text = {copy, text.size()};

  _size = 0;
  while (_size + _headerSize < kMaxLine) {
    const std::size_t end = text.find('\n');
    add({_bytes, _headerSize});
    addVisible(text.substr(0, end));
    add("\n");
    if (end == std::string_view::npos) {
      return;
    }
    text.remove_prefix(end + 1);
  }
}

void Line::addVisible(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = visibleLength(text);
    char escape[sizeof "\\x1b"];
    std::string_view shown = text.substr(0, length);
    if (length == 0) {
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[0]));
      shown = escape;
    }
    if (shown.size() >= kMaxLine - _size) {
      return; // the last byte is for the newline
    }
    add(shown);
    text.remove_prefix(std::max(length, std::size_t{1}));
  }
}

// memmove: the header of the first line is copied onto itself.
void Line::add(std::string_view part) {
  std::memmove(_bytes + _size, part.data(), part.size());
  _size += part.size();
}

} // namespace platform::dlog
