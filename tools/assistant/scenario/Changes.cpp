// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Changes.h"

#include <poll.h>

namespace norix::assistant::scenario {
namespace {

namespace fs = std::filesystem;

// Looking costs little, and works on every file system, other than being told.
constexpr int kBetweenLooks = 200;

} // namespace

void Changes::add(const std::vector<std::string> &paths, const std::string &further) {
  _paths.insert(_paths.end(), paths.begin(), paths.end());
  if (!further.empty()) {
    _paths.push_back(further);
  }
  _seen = look();
}

void Changes::await() const {
  while (!areThere()) {
    (void)poll(nullptr, 0, kBetweenLooks);
  }
}

// A file may go away at any time: then it has no time, and a folder nothing in it.
Changes::Versions Changes::look() const {
  Versions versions;
  std::error_code ignored;
  for (const std::string &path : _paths) {
    versions[path] = {fs::last_write_time(path, ignored), fs::file_size(path, ignored)};
    for (fs::recursive_directory_iterator entry(path, ignored); entry != end(entry);
         entry.increment(ignored)) {
      versions[entry->path().string()] = {entry->last_write_time(ignored),
                                          entry->file_size(ignored)};
    }
  }
  return versions;
}

} // namespace norix::assistant::scenario
