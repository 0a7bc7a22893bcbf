// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_TEMPORARYFOLDER_H
#define NORIX_TESTS_SUPPORT_TEMPORARYFOLDER_H

#include <filesystem>
#include <string>

namespace support {

/// A new folder, which is removed with everything in it.
class TemporaryFolder {
public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  /// Absolute and without symbolic links. Short, because the path of a socket is.
  const std::string &path() const { return _path; }
  std::string operator/(const std::string &name) const { return _path + "/" + name; }
  /// Writes a file, in folders that are created as needed. @return Its path.
  std::filesystem::path write(const std::string &name, const std::string &content) const;

private:
  std::string _path;
};

/// The content of a file; empty when there is none.
std::string contentOf(const std::string &path);

} // namespace support

#endif
