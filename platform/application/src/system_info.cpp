// SPDX-License-Identifier: Apache-2.0
#include <system_info.h>

#include <string_view>

namespace {

constexpr std::string_view kScheme = "http://";
constexpr std::string_view kFeatures = "tizen.org/feature/";

bool isFeature(std::string_view key) {
  if (key.substr(0, kScheme.size()) == kScheme) {
    key.remove_prefix(kScheme.size());
  }
  return key.size() > kFeatures.size() && key.substr(0, kFeatures.size()) == kFeatures;
}

} // namespace

int system_info_get_platform_bool(const char *key, bool *value) {
  if (key == nullptr || value == nullptr || !isFeature(key)) {
    return SYSTEM_INFO_ERROR_INVALID_PARAMETER;
  }
  *value = false;
  return SYSTEM_INFO_ERROR_NONE;
}
