// SPDX-License-Identifier: Apache-2.0
#include "integration/app/LogWatch.h"

#include <dlog.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

namespace integration {
namespace {

struct Watch {
  std::string text;
  std::function<void()> seen;
};

std::vector<Watch> &watches() {
  static std::vector<Watch> all;
  return all;
}

void lookAt(const std::string &line) {
  for (auto watch = watches().begin(); watch != watches().end(); ++watch) {
    if (line.find(watch->text) == std::string::npos) {
      continue;
    }
    const std::function<void()> seen = std::move(watch->seen);
    watches().erase(watch);
    seen();
    return;
  }
}

} // namespace

void LogWatch::once(std::string text, std::function<void()> seen) {
  watches().push_back({std::move(text), std::move(seen)});
}

} // namespace integration

int dlog_print(log_priority prio, const char *tag, const char *fmt, ...) {
  std::array<char, 2048> line{};
  va_list arguments;
  va_start(arguments, fmt);
  (void)std::vsnprintf(line.data(), line.size(), fmt, arguments);
  va_end(arguments);
  integration::lookAt(line.data());

  va_start(arguments, fmt);
  const int written = dlog_vprint(prio, tag, fmt, arguments);
  va_end(arguments);
  return written;
}
