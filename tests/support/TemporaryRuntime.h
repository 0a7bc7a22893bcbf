// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_TEMPORARYRUNTIME_H
#define NORIX_TESTS_SUPPORT_TEMPORARYRUNTIME_H

#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <list>
#include <optional>
#include <string>

namespace support {

/// A desktop for one test: a runtime folder, a home and a folder of applications, which the
/// environment of this process and of its children names until the end of the test.
class TemporaryRuntime {
public:
  TemporaryRuntime();

  /// Sets the app id as which this process connects from now on.
  void sendAs(const std::string &appId);

  /// Puts an application where the platform looks for it, with a manifest that declares this
  /// version or none.
  void install(const std::string &appId, const std::optional<std::string> &sdkVersion) const;
  void uninstall(const std::string &appId) const;

  /// Writes a file. @return Its path.
  std::filesystem::path write(const std::string &name, const std::string &content) const;

private:
  TemporaryFolder _folder;
  std::list<ScopedVariable> _variables; // Restored last first.
};

} // namespace support

#endif
