// SPDX-License-Identifier: Apache-2.0
//
// One call of the log, whose texts may come from a peer:
//   priority, length of the tag, the tag, the text
#include "support/Input.h"
#include "support/check.h"

#include "line.h"

#include <algorithm>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <string>
#include <string_view>

namespace {

using fuzz::check;
using platform::dlog::Line;

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

// What a terminal displays, and nothing that it obeys.
void checkHarmless(std::string_view bytes) {
  static const char *const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
  check(locale != nullptr, "there is a locale with UTF-8");
  std::mbstate_t state{};
  while (!bytes.empty()) {
    wchar_t code = 0;
    const std::size_t length = std::mbrtowc(&code, bytes.data(), bytes.size(), &state);
    check(length <= bytes.size(), "what is written is UTF-8");
    check(code == L'\n' || code == L'\t' || (code >= L' ' && (code < 0x7f || code > 0x9f)),
          "what is written has no control characters");
    bytes.remove_prefix(length);
  }
}

// Whether the log shows the beginning of a text, byte by byte or as escapes.
bool isShown(std::string_view text, std::string_view shown) {
  while (!shown.empty() && !text.empty()) {
    char escape[sizeof "\\x1b"];
    std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[0]));
    const bool isItself = shown[0] == text[0];
    if (!isItself && shown.substr(0, 4) != escape) {
      return false;
    }
    shown.remove_prefix(isItself ? 1 : 4);
    text.remove_prefix(1);
  }
  return shown.empty();
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
  check(!bytes.empty() && bytes.size() <= platform::dlog::kMaxLine,
        "a call writes a bounded number of bytes");
  check(bytes.back() == '\n', "what is written ends with a line's end");
  if (text.empty() || text.back() != '\n') {
    text += '\n';
  }
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  const std::string shown = textOf(bytes, headerSize(priority, tag), lines);
  const std::string_view uncut(shown.data(), shown.size() - 1);
  checkHarmless(bytes);
  check(isShown(text, uncut), "the log shows the text");
  check(shown.size() >= text.size() || bytes.size() > platform::dlog::kMaxLine / 2,
        "only a long text is cut");
  return 0;
}
