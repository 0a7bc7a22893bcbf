// SPDX-License-Identifier: Apache-2.0
#include <app_info.h>

#include "copyText.h"
#include "manifest/AppId.h"
#include "manifest/ManifestReader.h"
#include "manifest/find.h"

#include <dlog.h>
#include <new>
#include <string>

struct app_info_s {
  std::string package;
  platform::application::DeclaredApplication application;
};

namespace {

constexpr const char *kTag = "APP_MANAGER";

void explainMissing(const std::string &appId) {
  if (!platform::application::isUsableAppId(appId)) {
    dlog_print(DLOG_ERROR, kTag,
               "no application '%s': an id is not empty, not '.' or '..', and holds no '/'",
               appId.c_str());
    return;
  }
  dlog_print(DLOG_ERROR, kTag,
             "no application '%s': neither the manifest of this program nor "
             "$NORIX_DESKTOP_APPS/%s/tizen-manifest.xml declares it",
             appId.c_str(), appId.c_str());
}

int createInfo(const std::string &appId, app_info_h *info) {
  const std::optional<platform::application::FoundManifest> found =
      platform::application::findManifestOf(appId);
  if (!found) {
    explainMissing(appId);
    return APP_MANAGER_ERROR_NO_SUCH_APP;
  }
  *info = new app_info_s{found->manifest.package, *found->manifest.find(appId)};
  return APP_MANAGER_ERROR_NONE;
}

int copyInto(char **copy, const std::string &text) {
  try {
    *copy = platform::application::copyText(text);
    return APP_MANAGER_ERROR_NONE;
  } catch (const std::bad_alloc &) {
    return APP_MANAGER_ERROR_OUT_OF_MEMORY;
  }
}

int copyMember(app_info_h info, std::string platform::application::DeclaredApplication::*member,
               char **copy) {
  if (info == nullptr || copy == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  return copyInto(copy, info->application.*member);
}

} // namespace

int app_info_create(const char *app_id, app_info_h *app_info) {
  if (app_id == nullptr || app_info == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  try {
    return createInfo(app_id, app_info);
  } catch (const std::bad_alloc &) {
    return APP_MANAGER_ERROR_OUT_OF_MEMORY;
  } catch (const platform::application::ManifestError &error) {
    dlog_print(DLOG_ERROR, kTag, "%s", error.what());
    return error.kind() == platform::application::ManifestError::Kind::Unreadable
               ? APP_MANAGER_ERROR_IO_ERROR
               : APP_MANAGER_ERROR_DB_FAILED;
  }
}

int app_info_destroy(app_info_h app_info) {
  if (app_info == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  delete app_info;
  return APP_MANAGER_ERROR_NONE;
}

int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void *user_data) {
  if (app_info == nullptr || callback == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  for (const platform::application::Metadata &metadata : app_info->application.metadata) {
    if (!callback(metadata.key.c_str(), metadata.value.c_str(), user_data)) {
      break;
    }
  }
  return APP_MANAGER_ERROR_NONE;
}

int app_info_get_app_id(app_info_h app_info, char **app_id) {
  return copyMember(app_info, &platform::application::DeclaredApplication::id, app_id);
}

int app_info_get_exec(app_info_h app_info, char **exec) {
  return copyMember(app_info, &platform::application::DeclaredApplication::exec, exec);
}

int app_info_get_label(app_info_h app_info, char **label) {
  return copyMember(app_info, &platform::application::DeclaredApplication::label, label);
}

int app_info_get_package(app_info_h app_info, char **package) {
  if (app_info == nullptr || package == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  return copyInto(package, app_info->package);
}

int app_info_get_type(app_info_h app_info, char **type) {
  return copyMember(app_info, &platform::application::DeclaredApplication::type, type);
}
