// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_RUNTIMEFOLDER_H
#define NORIX_ASSISTANT_CERTIFY_RUNTIMEFOLDER_H

#include <filesystem>
#include <optional>
#include <string>

namespace norix::assistant::certify {

/// A folder for sockets and other files, removed in the end, which $XDG_RUNTIME_DIR names
/// meanwhile: what is started then has nothing to do with applications that run already. The rest
/// of the user's own folder, a display for one, is there by links.
class RuntimeFolder {
public:
  /// @throw std::runtime_error when it cannot be made
  RuntimeFolder();
  ~RuntimeFolder();
  RuntimeFolder(const RuntimeFolder &) = delete;
  RuntimeFolder &operator=(const RuntimeFolder &) = delete;

  const std::filesystem::path &path() const { return _path; }
  /// Writes a file. @return Its path
  std::filesystem::path write(const std::string &name, const std::string &content) const;
  /// Removes it with all that is in it; once is enough.
  void remove() const;

private:
  void link(const std::filesystem::path &folder) const;

  std::filesystem::path _path;
  std::optional<std::string> _before;
};

} // namespace norix::assistant::certify

#endif
