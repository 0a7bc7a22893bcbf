// SPDX-License-Identifier: Apache-2.0
#include "integration/harness/TemporaryRuntime.h"

#include <norix.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace integration {
namespace {

namespace fs = std::filesystem;

constexpr const char *kAssistantId = "com.valtren.tizen.norix";

fs::path makeFolder() {
  // Short, because the path of a socket is.
  std::string name = "/tmp/norix-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot make a folder in /tmp");
  }
  return name;
}

std::string metadata(const std::optional<std::string> &sdkVersion) {
  if (!sdkVersion) {
    return {};
  }
  return "<metadata key=\"" NORIX_SDK_VERSION_METADATA_KEY "\" value=\"" + *sdkVersion + "\"/>";
}

} // namespace

TemporaryRuntime::TemporaryRuntime() : _folder(makeFolder()) {
  for (const char *name : {"run", "home", "apps"}) {
    fs::create_directory(_folder / name);
  }
  fs::permissions(_folder / "run", fs::perms::owner_all);

  set("XDG_RUNTIME_DIR", _folder / "run");
  set("HOME", _folder / "home");
  set("NORIX_DESKTOP_APPS", _folder / "apps");
  sendAs(kAssistantId);
}

TemporaryRuntime::~TemporaryRuntime() {
  for (const auto &[variable, value] : _before) {
    if (value) {
      setenv(variable.c_str(), value->c_str(), 1);
    } else {
      unsetenv(variable.c_str());
    }
  }
  std::error_code ignored; // A leftover in /tmp is no reason to fail a test that passed.
  fs::remove_all(_folder, ignored);
}

void TemporaryRuntime::set(const std::string &variable, const std::string &value) {
  const char *before = std::getenv(variable.c_str());
  _before.emplace(variable, before ? std::optional<std::string>(before) : std::nullopt);
  setenv(variable.c_str(), value.c_str(), 1);
}

void TemporaryRuntime::sendAs(const std::string &appId) {
  set("AUL_APPID", appId);
}

void TemporaryRuntime::install(const std::string &appId,
                               const std::optional<std::string> &sdkVersion) const {
  fs::create_directories(_folder / "apps" / appId);
  write("apps/" + appId + "/tizen-manifest.xml",
        "<manifest xmlns=\"http://tizen.org/ns/packages\" api-version=\"6.5\" package=\"" + appId
            + "\" version=\"1.0.0\"><service-application appid=\"" + appId
            + "\" exec=\"app\" type=\"capp\">" + metadata(sdkVersion)
            + "</service-application></manifest>");
}

void TemporaryRuntime::uninstall(const std::string &appId) const {
  fs::remove_all(_folder / "apps" / appId);
}

fs::path TemporaryRuntime::write(const std::string &name, const std::string &content) const {
  fs::path path = _folder / name;
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path.string());
  }
  return path;
}

} // namespace integration
