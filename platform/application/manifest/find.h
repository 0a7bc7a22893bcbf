// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_MANIFEST_FIND_H
#define PLATFORM_APPLICATION_MANIFEST_FIND_H

#include "manifest/Manifest.h"

#include <optional>
#include <string>

namespace platform::application {

/** @brief A manifest and the folder it was found in: the application's folder. */
struct FoundManifest {
  std::string folder;
  Manifest manifest;
};

/** @brief The path of the running program. Empty when the system does not tell. */
std::string executablePath();

/**
 * @brief The manifest beside the running program, or in the folder above that.
 * @details An installed application is started from bin/ of its folder, one that is being
 *          developed often from the folder itself. Throws ManifestError when there is one that
 * cannot be used.
 */
std::optional<FoundManifest> findOwnManifest();

/**
 * @brief The manifest that declares this application: the running program's own, or that in
 *        $NORIX_DESKTOP_APPS/<app id>/.
 * @details Throws ManifestError when one of the two is there and cannot be used.
 */
std::optional<FoundManifest> findManifestOf(const std::string &appId);

/// The manifest of this application in $NORIX_DESKTOP_APPS/<app id>/. Throws ManifestError.
std::optional<FoundManifest> findInstalledManifest(const std::string &appId);

/**
 * @brief The program that a manifest's `exec` names: in bin/ of the application's folder, or beside
 *        the manifest. Empty when there is none, or when the path would lead out of the folder.
 */
std::string findProgram(const std::string &folder, const std::string &exec);

} // namespace platform::application

#endif
