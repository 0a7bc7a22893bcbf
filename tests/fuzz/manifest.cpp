// SPDX-License-Identifier: Apache-2.0
//
// A manifest's text. What is read is written again, every character as a reference, and has to be
// read as the same; what is refused is refused with its place.
#include "support/check.h"

#include "manifest/AppId.h"
#include "manifest/ManifestReader.h"

#include <algorithm>
#include <string>

namespace {

using fuzz::check;
using platform::application::DeclaredApplication;
using platform::application::Manifest;
using platform::application::ManifestError;
using platform::application::ManifestReader;

constexpr const char *kName = "tizen-manifest.xml";

std::string escaped(const std::string &text) {
  std::string result;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    result += code < 0x80 ? "&#" + std::to_string(code) + ";" : std::string(1, c);
  }
  return result;
}

std::string attribute(const char *name, const std::string &value) {
  return std::string(" ") + name + "=\"" + escaped(value) + "\"";
}

std::string written(const DeclaredApplication &application) {
  std::string text = "<service-application" + attribute("appid", application.id)
                     + attribute("exec", application.exec) + attribute("type", application.type)
                     + "><label>" + escaped(application.label) + "</label>";
  for (const platform::application::Metadata &entry : application.metadata) {
    text += "<metadata" + attribute("key", entry.key) + attribute("value", entry.value) + "/>";
  }
  return text + "</service-application>";
}

std::string written(const Manifest &manifest) {
  std::string text = "<manifest" + attribute("package", manifest.package)
                     + attribute("version", manifest.version) + ">";
  for (const DeclaredApplication &application : manifest.applications) {
    text += written(application);
  }
  return text + "</manifest>";
}

void checkManifest(const Manifest &manifest) {
  check(!manifest.package.empty() && !manifest.applications.empty(),
        "a manifest names its package and declares an application");
  for (const DeclaredApplication &application : manifest.applications) {
    check(platform::application::isUsableAppId(application.id), "an id can be part of a path");
    const DeclaredApplication *found = manifest.find(application.id);
    check(found != nullptr && found->id == application.id, "an application is found by its id");
    check(std::none_of(application.metadata.begin(), application.metadata.end(),
                       [](const auto &entry) { return entry.key.empty(); }),
          "metadata has keys");
  }
}

// "<name>:<line>: <what is wrong>"
void checkRefusal(const ManifestError &error, const std::string &text) {
  const std::string what = error.what();
  const std::string prefix = std::string(kName) + ":";
  check(error.kind() == ManifestError::Kind::Malformed, "a text that was read is malformed");
  check(what.rfind(prefix, 0) == 0, "a refusal names the file");
  const auto line = std::stol(what.substr(prefix.size()));
  check(line >= 1 && line <= 1 + std::count(text.begin(), text.end(), '\n'),
        "a refusal names a line that there is");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  try {
    const Manifest manifest = ManifestReader::parse(text, kName);
    checkManifest(manifest);
    const std::string again = written(manifest);
    check(written(ManifestReader::parse(again, kName)) == again,
          "a manifest that is written again is the same");
  } catch (const ManifestError &error) {
    checkRefusal(error, text);
  }
  return 0;
}
