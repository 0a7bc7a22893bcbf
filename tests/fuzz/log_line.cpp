// SPDX-License-Identifier: Apache-2.0
//
// One call of the log, whose texts may come from a peer:
//   priority, length of the tag, the tag, the text
#include "support/Input.h"
#include "support/check.h"

#include "line.h"

#include <algorithm>
#include <cstdarg>
#include <string>
#include <string_view>

namespace {

using fuzz::check;
using platform::Line;

bool print(Line &line, const char *format, ...) __attribute__((format(printf, 2, 3)));

bool print(Line &line, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const bool done = line.format(format, arguments);
  va_end(arguments);
  return done;
}

std::size_t headerSize(int priority, const std::string &tag) {
  Line line(priority, tag.c_str());
  check(print(line, "%s", ""), "an empty text can be logged");
  return line.bytes().size() - 1;
}

// The text that a reader of the log puts together again.
std::string textOf(std::string_view bytes, std::size_t headerSize, std::size_t lines) {
  const std::string_view header = bytes.substr(0, headerSize);
  std::string text;
  for (std::size_t i = 0; i < lines && !bytes.empty(); ++i) {
    check(bytes.substr(0, headerSize) == header, "every line begins with the same header");
    bytes.remove_prefix(headerSize);
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    text.append(bytes.substr(0, end)).append("\n");
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  check(bytes.empty(), "there are as many lines as the text has");
  return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int priority = DLOG_VERBOSE + static_cast<int>(input.below(DLOG_FATAL - DLOG_VERBOSE + 1));
  const std::string tag(std::string(input.text()).c_str()); // Both are C texts.
  std::string text(std::string(input.rest()).c_str());

  Line line(priority, tag.c_str());
  check(print(line, "%s", text.c_str()), "every text can be logged");

  const std::string_view bytes = line.bytes();
  check(!bytes.empty() && bytes.size() <= platform::kMaxLine,
        "a call writes a bounded number of bytes");
  check(bytes.back() == '\n', "what is written ends with a line's end");
  if (text.empty() || text.back() != '\n') {
    text += '\n';
  }
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  const std::string shown = textOf(bytes, headerSize(priority, tag), lines);
  const std::string_view uncut(shown.data(), shown.size() - 1);
  check(std::string_view(text).substr(0, uncut.size()) == uncut, "the log shows the text");
  check(shown == text || bytes.size() > platform::kMaxLine / 2, "only a long text is cut");
  return 0;
}
