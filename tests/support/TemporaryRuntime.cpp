// SPDX-License-Identifier: Apache-2.0
#include "support/TemporaryRuntime.h"

#include <norix.h>

namespace support {
namespace {

namespace fs = std::filesystem;

constexpr const char *kAssistantId = "com.valtren.tizen.norix";

std::string metadata(const std::optional<std::string> &sdkVersion) {
  if (!sdkVersion) {
    return {};
  }
  return "<metadata key=\"" NORIX_SDK_VERSION_METADATA_KEY "\" value=\"" + *sdkVersion + "\"/>";
}

} // namespace

TemporaryRuntime::TemporaryRuntime() {
  for (const char *name : {"run", "home", "apps"}) {
    fs::create_directory(_folder / name);
  }
  fs::permissions(_folder / "run", fs::perms::owner_all);

  _variables.emplace_front("XDG_RUNTIME_DIR", _folder / "run");
  _variables.emplace_front("HOME", _folder / "home");
  _variables.emplace_front("NORIX_DESKTOP_APPS", _folder / "apps");
  sendAs(kAssistantId);
}

void TemporaryRuntime::sendAs(const std::string &appId) {
  _variables.emplace_front("AUL_APPID", appId);
}

void TemporaryRuntime::install(const std::string &appId,
                               const std::optional<std::string> &sdkVersion) const {
  _folder.write("apps/" + appId + "/tizen-manifest.xml",
                "<manifest xmlns=\"http://tizen.org/ns/packages\" api-version=\"6.5\" package=\""
                    + appId + "\" version=\"1.0.0\"><service-application appid=\"" + appId
                    + "\" exec=\"app\" type=\"capp\">" + metadata(sdkVersion)
                    + "</service-application></manifest>");
}

void TemporaryRuntime::uninstall(const std::string &appId) const {
  fs::remove_all(_folder / "apps/" + appId);
}

fs::path TemporaryRuntime::write(const std::string &name, const std::string &content) const {
  return _folder.write(name, content);
}

} // namespace support
