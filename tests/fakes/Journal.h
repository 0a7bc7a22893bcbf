// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_JOURNAL_H
#define NORIX_FAKES_JOURNAL_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace fake {

/// One call of the platform, in words: bundle_add_str(bundle 1, result, done).
struct Call {
  std::string function;
  std::string arguments;

  std::string text() const { return function + "(" + arguments + ")"; }
};

/// Every call that the library made to the platform, in order.
class Journal {
public:
  void add(std::string_view function, std::string arguments);
  void clear() { _calls.clear(); }

  const std::vector<Call> &calls() const { return _calls; }
  /// The calls of these functions alone.
  std::vector<std::string> of(std::initializer_list<std::string_view> functions) const;
  int count(std::string_view function) const;

private:
  std::vector<Call> _calls;
};

} // namespace fake

#endif
