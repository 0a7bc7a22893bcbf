// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_FILTER_H
#define PLATFORM_DLOG_FILTER_H

#include <dlog.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace platform::dlog {

/// The lines that pass, in dlogutil's words: TAG:PRIORITY, TAG or *:PRIORITY, separated by blanks.
class Filter {
public:
  /// An empty expression lets every line pass.
  explicit Filter(std::string_view expression);

  /// The invalid words, which are ignored, each in quotes; empty when there are none.
  const std::string &refusedWords() const { return _refusedWords; }

  /// The priority from which on every line passes, whatever its tag.
  int highest() const { return _highest; }

  /// Whether a line is dropped; inline, because it is all that a dropped line costs. One whose
  /// priority is below the valid ones is not dropped but refused later. Only for a priority below
  /// highest().
  bool drops(int priority, const char *tag) const {
    return priority < _lowest ? priority >= DLOG_VERBOSE : dropsTagged(priority, tag);
  }

private:
  struct Rule {
    std::string tag;
    int lowest;
  };

  /// Compares the text of a tag and not its address: an application may reuse the memory of a tag.
  bool dropsTagged(int priority, const char *tag) const {
    for (const Rule &rule : _rules) {
      if (std::strcmp(rule.tag.c_str(), tag) == 0) {
        return priority < rule.lowest;
      }
    }
    return priority < _others;
  }

  bool addWord(std::string_view word);
  void setRule(std::string_view tag, int lowest);
  void findBounds();

  std::vector<Rule> _rules;
  int _others = DLOG_VERBOSE;
  int _lowest = DLOG_VERBOSE; // no line below it passes, whatever its tag
  int _highest = DLOG_VERBOSE;
  std::string _refusedWords;
};

} // namespace platform::dlog

#endif
