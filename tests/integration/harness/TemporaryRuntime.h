// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_TEMPORARYRUNTIME_H
#define NORIX_TESTS_INTEGRATION_TEMPORARYRUNTIME_H

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace integration {

// A desktop of a test's own: runtime folder, home, applications. This process and the processes
// that it starts live there, and see no other test; afterwards it is as if it had not been.
class TemporaryRuntime {
public:
  TemporaryRuntime();
  ~TemporaryRuntime();
  TemporaryRuntime(const TemporaryRuntime &) = delete;
  TemporaryRuntime &operator=(const TemporaryRuntime &) = delete;

  // The app id as which this process connects from now on.
  void sendAs(const std::string &appId);

  // Puts an application where the platform looks for it; without a version the manifest declares
  // none.
  void install(const std::string &appId, const std::optional<std::string> &sdkVersion) const;
  void uninstall(const std::string &appId) const;

  // Writes a file of this name, and returns its path.
  std::filesystem::path write(const std::string &name, const std::string &content) const;

private:
  void set(const std::string &variable, const std::string &value);

  std::filesystem::path _folder;
  std::map<std::string, std::optional<std::string>> _before;
};

} // namespace integration

#endif
