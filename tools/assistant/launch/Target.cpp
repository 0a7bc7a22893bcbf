// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Target.h"

#include <cstdlib>
#include <manifest/ManifestReader.h>
#include <manifest/find.h>

namespace norix::assistant::launch {
namespace {

namespace fs = std::filesystem;
using platform::application::DeclaredApplication;
using platform::application::Manifest;
using platform::application::ManifestError;
using platform::application::ManifestReader;

constexpr const char *kManifestName = "tizen-manifest.xml";
constexpr const char *kAppsVariable = "NORIX_DESKTOP_APPS";
constexpr const char *kNoManifest = "no-manifest";

fs::path manifestOfId(const std::string &id) {
  const char *const apps = std::getenv(kAppsVariable);
  if (apps == nullptr || *apps == '\0') {
    throw LaunchError("there is no folder '" + id + "'; for an app id, set " + kAppsVariable
                      + " to the folder that holds the applications");
  }
  fs::path manifest = fs::path(apps) / id / kManifestName;
  if (!fs::exists(manifest)) {
    throw LaunchError("no " + std::string(kManifestName) + " in '" + manifest.parent_path().string()
                          + "'; check the app id and " + kAppsVariable,
                      kNoManifest);
  }
  return manifest;
}

fs::path findManifest(const std::string &name) {
  std::error_code ignored;
  if (fs::is_regular_file(name, ignored)) {
    return fs::canonical(name);
  }
  if (fs::exists(fs::path(name) / kManifestName, ignored)) {
    return fs::canonical(fs::path(name) / kManifestName);
  }
  if (name.find('/') != std::string::npos || fs::is_directory(name, ignored)) {
    throw LaunchError("no " + std::string(kManifestName) + " in '" + name
                          + "'; give the application's folder, or write a manifest there that "
                            "declares its id, its program and its SDK version",
                      kNoManifest);
  }
  return fs::canonical(manifestOfId(name));
}

fs::path programOf(const fs::path &folder, const std::string &exec) {
  const std::string program = platform::application::findProgram(folder, exec);
  if (program.empty()) {
    throw LaunchError("no program '" + exec + "' in '" + folder.string()
                      + "' or its bin/; build the application first, and let exec name the program "
                        "by a path within the folder");
  }
  return program;
}

const DeclaredApplication &findStartable(const Manifest &manifest, const fs::path &path) {
  for (const DeclaredApplication &application : manifest.applications) {
    if (!application.exec.empty()) {
      return application;
    }
  }
  throw LaunchError("'" + path.string() + "' names no program; give the application's element the "
                    + "attribute exec");
}

Manifest readManifest(const fs::path &path) {
  try {
    return ManifestReader::read(path);
  } catch (const ManifestError &error) {
    throw LaunchError(error.what());
  }
}

} // namespace

Target findTarget(const std::string &name) {
  const fs::path path = findManifest(name);
  const Manifest manifest = readManifest(path);
  const DeclaredApplication &application = findStartable(manifest, path);

  Target target;
  target.id = application.id;
  target.manifest = path;
  target.folder = path.parent_path();
  target.program = programOf(target.folder, application.exec);
  for (const auto &entry : application.metadata) {
    target.metadata.push_back({entry.key, entry.value, entry.hasValue});
  }
  return target;
}

std::string appsFolderOf(const Target &target) {
  return target.folder.parent_path();
}

} // namespace norix::assistant::launch
