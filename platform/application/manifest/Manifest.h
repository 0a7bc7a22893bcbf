// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_MANIFEST_MANIFEST_H
#define PLATFORM_APPLICATION_MANIFEST_MANIFEST_H

#include <string>
#include <string_view>
#include <vector>

namespace platform::application {

/** @brief One metadata entry of an application. */
struct Metadata {
  std::string key;
  std::string value;
  // False where the manifest gives none, which the platform reads as an empty one.
  bool hasValue = true;
};

/** @brief One application of a package, as its manifest declares it. */
struct DeclaredApplication {
  std::string id;
  std::string exec;
  std::string type;
  std::string label;
  std::vector<Metadata> metadata;
};

/** @brief What a manifest declares: a package of at least one application. */
struct Manifest {
  std::string package;
  std::string version;
  std::vector<DeclaredApplication> applications;

  /** @brief The application with this id, or null. It lives as long as the manifest. */
  const DeclaredApplication *find(std::string_view appId) const {
    for (const DeclaredApplication &application : applications) {
      if (application.id == appId) {
        return &application;
      }
    }
    return nullptr;
  }
};

} // namespace platform::application

#endif
