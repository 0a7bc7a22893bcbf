// SPDX-License-Identifier: Apache-2.0
#include "fakes/Application.h"

#include "fakes/Heap.h"
#include "fakes/Platform.h"

#include <app_common.h>
#include <app_manager.h>

#include <algorithm>

namespace fake {

app_info_h Application::createInfo() {
  _infos.push_back(std::make_unique<app_info_s>(app_info_s{++_created}));
  return _infos.back().get();
}

bool Application::destroyInfo(app_info_h handle) {
  const auto found = std::find_if(_infos.begin(), _infos.end(),
                                  [handle](const auto &info) { return info.get() == handle; });
  if (found == _infos.end()) {
    return false;
  }
  _destroyed.push_back(std::move(*found));
  _infos.erase(found);
  return true;
}

app_info_h Application::find(app_info_h handle) const {
  const auto found = std::find_if(_infos.begin(), _infos.end(),
                                  [handle](const auto &info) { return info.get() == handle; });
  return found == _infos.end() ? nullptr : found->get();
}

} // namespace fake

using fake::platform;
using fake::PlatformCall;

extern "C" {

int app_get_id(char **id) {
  const PlatformCall call("app_get_id");
  if (call.failure()) {
    return *call.failure();
  }
  if (!platform().application.id) {
    return APP_ERROR_INVALID_CONTEXT;
  }
  *id = fake::Heap::instance().platformText(platform().application.id->c_str());
  return platform().application.idResult;
}

int app_info_create(const char *app_id, app_info_h *app_info) {
  const PlatformCall call("app_info_create", app_id);
  if (call.failure()) {
    return *call.failure();
  }
  *app_info = platform().application.createInfo();
  return APP_MANAGER_ERROR_NONE;
}

int app_info_destroy(app_info_h app_info) {
  const PlatformCall call("app_info_destroy", app_info);
  if (!platform().application.destroyInfo(app_info)) {
    platform().misuses.emplace_back("app_info_destroy with an app info that is not alive");
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  return call.failure().value_or(APP_MANAGER_ERROR_NONE);
}

int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void *user_data) {
  const PlatformCall call("app_info_foreach_metadata", app_info);
  if (platform().application.find(app_info) == nullptr) {
    platform().misuses.emplace_back("app_info_foreach_metadata with an app info not alive");
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  for (const auto &[key, value] : platform().application.metadata) {
    const fake::InsideLibrary inside;
    if (!callback(key.c_str(), value.c_str(), user_data)) {
      break;
    }
  }
  // A failure comes last: it takes nothing back of what was handed out.
  return call.failure().value_or(APP_MANAGER_ERROR_NONE);
}
}
