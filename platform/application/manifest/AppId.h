// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_MANIFEST_APP_ID_H
#define PLATFORM_APPLICATION_MANIFEST_APP_ID_H

#include <cstddef>
#include <string_view>

namespace platform::application {

/// The length of the longest id, in bytes: that of the longest file name.
constexpr std::size_t kMaxAppId = 255;

/**
 * @brief Whether the id names an application and nothing else once it is part of a path.
 * @details An application id becomes the name of a folder and of a socket, so an id that is empty,
 *          "." or "..", or holds a slash would lead out of the place it is meant for. Control
 *          characters would end up in terminals.
 */
bool isUsableAppId(std::string_view appId);

} // namespace platform::application

#endif
