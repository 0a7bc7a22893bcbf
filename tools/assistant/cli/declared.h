// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_DECLARED_H
#define NORIX_ASSISTANT_CLI_DECLARED_H

#include "assistant/cli/Console.h"
#include "assistant/client/Request.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// The folder of an application: of the one that runs under this id, else the one named after the
/// id in $NORIX_DESKTOP_APPS. Nothing when neither has a manifest.
std::optional<std::filesystem::path> findApplicationFolder(const std::string &appId);

/// The ids of the applications in $NORIX_DESKTOP_APPS.
std::vector<std::string> installedApplications();

/// Says what an application's declarations say against a request. It is sent all the same: only the
/// application knows.
void warnOfParameters(const std::string &appId, const Request &request, const Console &console);

} // namespace norix::assistant::cli

#endif
