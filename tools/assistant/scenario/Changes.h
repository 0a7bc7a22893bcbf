// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_CHANGES_H
#define NORIX_ASSISTANT_SCENARIO_CHANGES_H

#include <filesystem>
#include <map>
#include <string>
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
  using Times = std::map<std::string, std::filesystem::file_time_type>;
  Times look() const;

  std::vector<std::string> _paths;
  Times _seen;
};

} // namespace norix::assistant::scenario

#endif
