// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_SELECT_H
#define NORIX_ASSISTANT_SCENARIO_SELECT_H

#include "assistant/report/Suite.h"
#include "assistant/scenario/read.h"

#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// Which scenarios to play, and how often.
struct Selection {
  /// Files, and folders whose files *.yaml and *.yml are meant, those in folders of theirs too.
  std::vector<std::string> paths;
  /// A regular expression of RE2 to be found in the file's path or the scenario's name; empty for
  /// all.
  std::string filter;
  std::size_t repeat = 1;
  /// "I/N": every N-th, beginning with the I-th; empty for all.
  std::string shard;
};

/// A file that cannot be used, and why.
struct Refused {
  std::string file;
  std::string why;
};

struct Loaded {
  std::vector<Scenario> scenarios;
  std::vector<Refused> refused;
};

/// The files that the paths mean: in the order of the paths, those of a folder by name.
/// @throw std::invalid_argument for a path that is not there
std::vector<std::string> filesOf(const std::vector<std::string> &paths);

/// Reads what is selected.
/// @throw std::invalid_argument when the selection itself is wrong, or selects nothing
Loaded load(const Selection &selection, const ReadOptions &options);

/// The case of a file that was refused: one step, which could not be tried.
report::Case caseOf(const Refused &refused);

} // namespace norix::assistant::scenario

#endif
