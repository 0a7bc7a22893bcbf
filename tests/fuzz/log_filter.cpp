// SPDX-License-Identifier: Apache-2.0
//
// DLOG_FILTER, and a tag to ask about:
//   length of the tag, the tag, the expression
#include "support/Input.h"
#include "support/check.h"

#include "filter.h"

#include <dlog.h>

#include <string>

namespace {

using fuzz::check;
using platform::dlog::Filter;

// As dlog_print asks.
bool passes(const Filter &filter, int priority, const std::string &tag) {
  return priority >= filter.highest() || !filter.drops(priority, tag.c_str());
}

// The lowest priority that passes.
int lowestOf(const Filter &filter, const std::string &tag) {
  int lowest = DLOG_VERBOSE;
  while (lowest < DLOG_SILENT && !passes(filter, lowest, tag)) {
    ++lowest;
  }
  for (int priority = lowest; priority <= DLOG_FATAL; ++priority) {
    check(passes(filter, priority, tag), "what is more urgent than a line that passes, passes");
  }
  return lowest;
}

bool isWord(const std::string &tag) {
  return !tag.empty() && tag != "*" && tag.find_first_of(" \t\n") == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string tag(std::string(input.text()).c_str()); // Both are C texts.
  const std::string expression(std::string(input.rest()).c_str());

  const Filter filter(expression);
  const int lowest = lowestOf(filter, tag);

  const Filter spaced(" \t\n" + expression + "\n ");
  check(lowestOf(spaced, tag) == lowest && spaced.refusedWords() == filter.refusedWords(),
        "blanks around the words change nothing");
  if (isWord(tag)) {
    const Filter narrowed(expression + " " + tag + ":E");
    check(lowestOf(narrowed, tag) == DLOG_ERROR, "of two words about a tag, the later one counts");
  }
  const Filter silent(expression + " *:S");
  check(lowestOf(silent, tag) == lowest || lowestOf(silent, tag) == DLOG_SILENT,
        "silence is for the tags that no word names");
  return 0;
}
