// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_TARGET_H
#define NORIX_ASSISTANT_LAUNCH_TARGET_H

#include "assistant/trace/Finding.h"
#include "assistant/trace/checks.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// An application that cannot be started; what() says why, and what to do.
class LaunchError : public std::runtime_error {
public:
  explicit LaunchError(const std::string &text, std::string word = "cannot-launch")
      : std::runtime_error(text), _word(std::move(word)) {}

  /// For scripts: `no-manifest`, or `cannot-launch`.
  const std::string &word() const { return _word; }

private:
  std::string _word;
};

/// The application that a command names, as its manifest declares it.
struct Target {
  std::string id;
  std::filesystem::path folder;
  std::filesystem::path manifest;
  std::filesystem::path program;
  std::vector<trace::MetadataEntry> metadata;
};

/// Finds an application.
///
/// @param name  its folder, its manifest, or its id, which names a folder in $NORIX_DESKTOP_APPS
/// @throw LaunchError when there is none, or its manifest cannot be used, or its program is missing
Target findTarget(const std::string &name);

/// The folder that holds the application's: what $NORIX_DESKTOP_APPS is for it, unless it is set.
std::string appsFolderOf(const Target &target);

} // namespace norix::assistant::launch

#endif
