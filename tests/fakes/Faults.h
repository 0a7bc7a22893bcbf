// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_FAULTS_H
#define NORIX_FAKES_FAULTS_H

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace fake {

/// The name under which the library's non-throwing allocations stand in the journal and here.
inline constexpr const char *kNothrowNew = "new(nothrow)";

/// Which calls of the platform fail.
class Faults {
public:
  /// The nth call from now fails; nth starts at 1. Where the function returns a code, it is result.
  void fail(const std::string &function, int nth = 1, int result = -5);
  /// Every call from now on fails.
  void failAlways(const std::string &function, int result = -5);

  /// Counts one call and says with what result it fails, if it does.
  std::optional<int> next(const std::string &function);

private:
  std::map<std::string, int> _calls;
  std::map<std::pair<std::string, int>, int> _results;
  std::map<std::string, int> _always;
};

} // namespace fake

#endif
