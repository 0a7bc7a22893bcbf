// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/markup.h"

#include "assistant/trace/visible.h"

namespace norix::assistant::report {
namespace {

const char *entityOf(char character) {
  switch (character) {
  case '&':
    return "&amp;";
  case '<':
    return "&lt;";
  case '>':
    return "&gt;";
  case '"':
    return "&quot;";
  default:
    return nullptr;
  }
}

} // namespace

std::string escapeMarkup(const std::string &text) {
  std::string escaped;
  for (const char character : trace::visibleLines(text)) {
    const char *const entity = entityOf(character);
    if (entity != nullptr) {
      escaped += entity;
    } else {
      escaped += character;
    }
  }
  return escaped;
}

} // namespace norix::assistant::report
