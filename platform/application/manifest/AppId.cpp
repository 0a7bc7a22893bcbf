// SPDX-License-Identifier: Apache-2.0
#include "AppId.h"

#include <algorithm>

namespace platform::application {

bool isUsableAppId(std::string_view appId) {
  const auto isForbidden = [](char c) {
    return c == '/' || static_cast<unsigned char>(c) < ' ' || c == '\x7f';
  };
  return !appId.empty() && appId.size() <= kMaxAppId && appId != "." && appId != ".."
         && std::none_of(appId.begin(), appId.end(), isForbidden);
}

} // namespace platform::application
