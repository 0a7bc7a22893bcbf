// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_BASELINE_H
#define NORIX_ASSISTANT_CERTIFY_BASELINE_H

#include <stdexcept>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// A file of accepted failures that cannot be used; what() names the file and the line.
class BaselineError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The failures of an application that are accepted for now: a line for each, the name of the
/// verdict. What follows a # is a comment.
class Baseline {
public:
  struct Entry {
    /// The check's id, and after a blank what the verdict is about.
    std::string name;
    int line = 0;
  };

  /// None.
  Baseline() = default;
  /// @throw BaselineError when the file cannot be read, or names a check that does not exist
  static Baseline read(const std::string &path);

  const std::string &path() const { return _path; }
  const std::vector<Entry> &entries() const { return _entries; }
  /// The entry with this name, or null.
  const Entry *find(const std::string &name) const;

private:
  void add(const std::string &text, int line);

  std::string _path;
  std::vector<Entry> _entries;
};

/// The id of the check that a verdict's name begins with.
std::string checkOf(const std::string &name);

} // namespace norix::assistant::certify

#endif
