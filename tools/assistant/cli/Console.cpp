// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Console.h"

#include "assistant/trace/visible.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
  }
  return true;
}

// The control characters that JSON lets pass: DEL, and C1, which UTF-8 begins with 0xC2.
std::string escapeRest(const std::string &json) {
  constexpr char kDelete = 0x7F;
  std::string escaped;
  for (size_t i = 0; i < json.size(); ++i) {
    const bool isC1 = json[i] == '\xC2' && static_cast<unsigned char>(json[i + 1]) < 0xA0;
    if (json[i] != kDelete && !isC1) {
      escaped += json[i];
      continue;
    }
    std::array<char, 8> code{};
    const auto byte = static_cast<unsigned char>(isC1 ? json[++i] : kDelete);
    (void)std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(byte));
    escaped += code.data();
  }
  return escaped;
}

bool isSmartTerminal(int descriptor) {
  const char *kind = std::getenv("TERM");
  return isatty(descriptor) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

bool wantsColours() {
  const char *noColour = std::getenv("NO_COLOR");
  return (noColour == nullptr || *noColour == '\0') && isSmartTerminal(STDOUT_FILENO);
}

const char *codeOf(Console::Style style) {
  switch (style) {
  case Console::Style::Good:
    return "\033[32m";
  case Console::Style::Bad:
    return "\033[31m";
  case Console::Style::Faint:
    return "\033[2m";
  case Console::Style::Plain:
    break;
  }
  return "";
}

Json toJson(const Ending &ending, const OutcomeRow &row) {
  Json json{{"outcome", row.word}, {"status", row.status}};
  json.update(ending.facts);
  if (ending.outcome != Outcome::Answered) {
    json["message"] = fill(row.sentence, ending.subject);
    if (*row.advice != '\0') {
      json["advice"] = fill(row.advice, ending.subject);
    }
  }
  return json;
}

} // namespace

std::string Console::styled(Style style, const std::string &text) const {
  if (style == Style::Plain || !wantsColours()) {
    return text;
  }
  return codeOf(style) + text + "\033[0m";
}

bool Console::write(const std::string &line) const {
  return writeAll(STDOUT_FILENO, line + "\n");
}

bool Console::print(const std::string &text) const {
  return write(_isRaw ? text : trace::visibleLines(text));
}

bool Console::printStyled(const std::string &text) const {
  return write(text);
}

bool Console::print(const Json &value) const {
  return write(escapeRest(value.dump(-1, ' ', false, Json::error_handler_t::replace)));
}

void Console::say(const std::string &message) const {
  (void)writeAll(STDERR_FILENO, "norix-assistant: " + message + "\n");
}

void Console::showProgress(const std::string &text) {
  if ((!_hasProgress && text.empty()) || !isSmartTerminal(STDERR_FILENO)) {
    return;
  }
  (void)writeAll(STDERR_FILENO, "\r\033[K" + text);
  _hasProgress = !text.empty();
}

bool Console::printText(const Ending &ending) const {
  return !ending.text || (ending.hasColours ? printStyled(*ending.text) : print(*ending.text));
}

int Console::reportLoss() const {
  const std::string why = std::strerror(errno);
  say("cannot write the answer to standard output: " + why);
  return rowOf(Outcome::Internal).status;
}

int Console::end(const Ending &ending) {
  showProgress({});
  if (ending.status) {
    return *ending.status;
  }
  const OutcomeRow &row = rowOf(ending.outcome);
  if (_isJson ? !print(toJson(ending, row)) : !printText(ending)) {
    return reportLoss();
  }
  if (*row.sentence != '\0') {
    const std::string advice = fill(row.advice, ending.subject);
    say(fill(row.sentence, ending.subject) + (advice.empty() ? "" : "\n" + advice));
  }
  return row.status;
}

} // namespace norix::assistant::cli
