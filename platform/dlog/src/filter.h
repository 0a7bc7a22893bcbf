// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_FILTER_H
#define PLATFORM_DLOG_FILTER_H

#include <dlog.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/** Which lines pass, in dlogutil's words: TAG:PRIORITY, TAG or *:PRIORITY, separated by blanks. */
class Filter {
public:
  /** An empty expression lets everything pass. */
  explicit Filter(std::string_view expression);

  /** The words that are none, each in quotes; empty when all is well. */
  const std::string &refusedWords() const { return _refusedWords; }

  /** Every line from here on passes, whatever its tag. */
  int highest() const { return _highest; }

  /**
   * Whether a line below highest() is dropped; one of no valid priority is not, it gets refused.
   * Not to be asked from highest() on.
   * In the header, for this is what a dropped line costs.
   */
  bool drops(int priority, const char *tag) const {
    return priority < _lowest ? priority >= DLOG_VERBOSE : dropsTagged(priority, tag);
  }

private:
  struct Rule {
    std::string tag;
    int lowest;
  };

  static std::uint64_t wordAt(const char *text) {
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    return word;
  }

  /**
   * Compares in place: to call the C library for a dozen bytes costs more than to look at them. Two
   * words, which may overlap, cover the usual tag.
   */
  static bool isSame(const char *a, const char *b, std::size_t length) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t second = length - kWord; // of a shorter tag: far beyond a word
    if (second <= kWord) {
      return wordAt(a) == wordAt(b) && wordAt(a + second) == wordAt(b + second);
    }
    std::size_t i = 0;
    while (i < length && a[i] == b[i]) {
      ++i;
    }
    return i == length;
  }

  /** The tag's text is compared, not its address: an application may reuse the memory of a tag. */
  bool dropsTagged(int priority, const char *tag) const {
    const std::size_t length = std::strlen(tag);
    const Rule *rule = _rules.data(); // there is one, or nothing would lie between the bounds
    do {
      if (rule->tag.size() == length && isSame(rule->tag.data(), tag, length)) {
        return priority < rule->lowest;
      }
    } while (++rule != _rules.data() + _rules.size());
    return priority < _others;
  }

  bool addWord(std::string_view word);
  void setRule(std::string_view tag, int lowest);
  void findBounds();

  std::vector<Rule> _rules;
  int _others = DLOG_VERBOSE;
  int _lowest = DLOG_VERBOSE; /**< No line below it passes, whatever its tag. */
  int _highest = DLOG_VERBOSE;
  std::string _refusedWords;
};

} // namespace platform

#endif
