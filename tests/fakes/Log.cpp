// SPDX-License-Identifier: Apache-2.0
#include "fakes/Log.h"

#include "fakes/Platform.h"

#include <dlog.h>

#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace fake {

std::vector<std::string> Log::texts() const {
  std::vector<std::string> texts;
  for (const LogLine &line : _lines) {
    texts.push_back(line.text);
  }
  return texts;
}

namespace {

constexpr std::string_view kLibraryHead = "%s %s %s(%d): ";
constexpr std::string_view kStubHead = "%s: %s(%d) > ";

std::string formatted(const char *format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(static_cast<size_t>(size) + 1, '\0');
  (void)std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

// Takes the leading arguments off the list, so that the rest belongs to the message text.
LogLine takenApart(log_priority priority, const char *tag, const char *format, va_list arguments) {
  LogLine line{priority, tag, format, "", "", "", 0, ""};
  const std::string_view whole(format);
  size_t head = 0;
  if (whole.substr(0, kLibraryHead.size()) == kLibraryHead) {
    line.prefix = va_arg(arguments, const char *);
    head = kLibraryHead.size();
  } else if (whole.substr(0, kStubHead.size()) == kStubHead) {
    head = kStubHead.size();
  }
  if (head != 0) {
    line.file = va_arg(arguments, const char *);
    line.function = va_arg(arguments, const char *);
    line.line = va_arg(arguments, int);
  }
  line.text = formatted(format + head, arguments);
  return line;
}

// What every line of the library has to have, whatever it says.
bool isInForm(const LogLine &line) {
  // The lines of norix.hpp: they come from the application's code.
  if (line.tag == "NORIX-CPP") {
    return line.priority == DLOG_ERROR;
  }
  const bool isPlaced = line.priority == DLOG_ERROR && !line.function.empty() && line.line > 0
                        && line.file.find('/') == std::string::npos;
  if (line.tag == "RPC_PORT_STUB") {
    return isPlaced && line.file == "message.cpp"
           && line.format.compare(0, kStubHead.size(), kStubHead) == 0;
  }
  return isPlaced && line.tag == "NORIX-APPSDK" && line.prefix == "v1.0-beta.1.4_tz6.5_211014 : "
         && line.format.compare(0, kLibraryHead.size(), kLibraryHead) == 0;
}

} // namespace
} // namespace fake

extern "C" int dlog_print(log_priority prio, const char *tag, const char *fmt, ...) {
  const fake::OutsideLibrary outside;
  va_list arguments;
  va_start(arguments, fmt);
  fake::LogLine line = fake::takenApart(prio, tag, fmt, arguments);
  va_end(arguments);
  if (outside.leftLibrary() && !fake::isInForm(line)) {
    fake::platform().misuses.push_back("dlog_print with a line out of form: " + line.text);
  }

  const int size = static_cast<int>(line.text.size());
  std::optional<int> failure;
  {
    const fake::LibraryScope caller(outside.leftLibrary());
    failure = fake::PlatformCall("dlog_print", line.text.c_str()).failure();
  }
  fake::platform().log.add(std::move(line));
  return failure.value_or(size);
}
