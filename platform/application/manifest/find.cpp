// SPDX-License-Identifier: Apache-2.0
#include "find.h"

#include "AppId.h"
#include "ManifestReader.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::application {
namespace {

constexpr const char *kManifestName = "/tizen-manifest.xml";
constexpr const char *kAppsVariable = "NORIX_DESKTOP_APPS";

// Only what is certainly absent counts as absent: a manifest that cannot be looked at is an error,
// which the reader reports.
bool isAbsent(const std::string &path) {
  struct stat status = {};
  return stat(path.c_str(), &status) != 0
         && (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG);
}

std::optional<FoundManifest> findIn(const std::string &folder) {
  const std::string path = folder + kManifestName;
  if (isAbsent(path)) {
    return std::nullopt;
  }
  return FoundManifest{folder, ManifestReader::read(path)};
}

// A relative path without "..".
bool leadsInside(const std::string &path) {
  return !path.empty() && path.front() != '/'
         && ("/" + path + "/").find("/../") == std::string::npos;
}

std::string parentOf(const std::string &path) {
  return path.substr(0, path.find_last_of('/'));
}

} // namespace

std::string executablePath() {
  std::string path(PATH_MAX, '\0');
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return path;
}

std::optional<FoundManifest> findOwnManifest() {
  const std::string path = executablePath();
  if (path.empty()) {
    return std::nullopt;
  }
  const std::string folder = parentOf(path);
  std::optional<FoundManifest> found = findIn(folder);
  return found ? found : findIn(parentOf(folder));
}

std::optional<FoundManifest> findManifestOf(const std::string &appId) {
  if (!isUsableAppId(appId)) {
    return std::nullopt;
  }
  std::optional<FoundManifest> own = findOwnManifest();
  return own && own->manifest.find(appId) != nullptr ? own : findInstalledManifest(appId);
}

std::optional<FoundManifest> findInstalledManifest(const std::string &appId) {
  const char *apps = std::getenv(kAppsVariable);
  if (!isUsableAppId(appId) || apps == nullptr || *apps == '\0') {
    return std::nullopt;
  }
  std::optional<FoundManifest> installed = findIn(std::string(apps) + "/" + appId);
  return installed && installed->manifest.find(appId) != nullptr ? installed : std::nullopt;
}

std::string findProgram(const std::string &folder, const std::string &exec) {
  if (!leadsInside(exec)) {
    return {};
  }
  for (const char *place : {"/bin/", "/"}) {
    std::string candidate = folder;
    candidate.append(place).append(exec);
    struct stat status = {};
    if (stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      return candidate;
    }
  }
  return {};
}

} // namespace platform::application
