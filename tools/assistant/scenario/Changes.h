// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_CHANGES_H
#define NORIX_ASSISTANT_SCENARIO_CHANGES_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace norix::assistant::scenario {

/// Notices that files change: what was seen when they were added, against what is there.
class Changes {
public:
  /// Files and folders, and everything in them; empty paths are left out.
  void add(const std::vector<std::string> &paths, const std::string &further);
  bool areThere() const { return look() != _seen; }
  /// Returns when something has changed.
  void await() const;

private:
  /// When it was written, and its size: a file that is being written may change both at one time.
  using Version = std::pair<std::filesystem::file_time_type, std::uintmax_t>;
  using Versions = std::map<std::string, Version>;
  Versions look() const;

  std::vector<std::string> _paths;
  Versions _seen;
};

} // namespace norix::assistant::scenario

#endif
