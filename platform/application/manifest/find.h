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

} // namespace platform::application

#endif
