// SPDX-License-Identifier: Apache-2.0
#include "filter.h"

#include "line.h"

#include <algorithm>

namespace platform::dlog {
namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kEveryTag = "*";

// The priority that a letter stands for, or DLOG_UNKNOWN.
int priorityOf(std::string_view letter) {
  const auto found = letter.size() == 1 ? kPriorityLetters.find(letter) : std::string_view::npos;
  return found != std::string_view::npos ? DLOG_VERBOSE + static_cast<int>(found) : DLOG_UNKNOWN;
}

} // namespace

Filter::Filter(std::string_view expression) {
  auto begin = expression.find_first_not_of(kBlanks);
  while (begin != std::string_view::npos) {
    const auto end = std::min(expression.find_first_of(kBlanks, begin), expression.size());
    const std::string_view word = expression.substr(begin, end - begin);
    if (!addWord(word)) {
      _refusedWords.append(_refusedWords.empty() ? "\"" : " \"").append(word).append("\"");
    }
    begin = expression.find_first_not_of(kBlanks, end);
  }
  findBounds();
}

bool Filter::addWord(std::string_view word) {
  const auto colon = word.rfind(':'); // the last one: a tag may contain colons
  if (colon == std::string_view::npos) {
    setRule(word, DLOG_VERBOSE);
    return true;
  }

  const int lowest = priorityOf(word.substr(colon + 1));
  if (colon == 0 || lowest == DLOG_UNKNOWN) {
    return false;
  }
  setRule(word.substr(0, colon), lowest);
  return true;
}

void Filter::setRule(std::string_view tag, int lowest) {
  if (tag == kEveryTag) {
    _others = lowest;
    return;
  }

  const auto known = std::find_if(_rules.begin(), _rules.end(),
                                  [tag](const Rule &rule) { return rule.tag == tag; });
  if (known != _rules.end()) {
    known->lowest = lowest;
  } else {
    _rules.push_back({std::string(tag), lowest});
  }
}

void Filter::findBounds() {
  _lowest = _others;
  _highest = _others;
  for (const Rule &rule : _rules) {
    _lowest = std::min(_lowest, rule.lowest);
    _highest = std::max(_highest, rule.lowest);
  }
}

} // namespace platform::dlog
