// SPDX-License-Identifier: Apache-2.0
#include "AppId.h"

namespace platform::application {

bool isUsableAppId(std::string_view appId) {
  return !appId.empty() && appId != "." && appId != ".."
         && appId.find('/') == std::string_view::npos;
}

} // namespace platform::application
