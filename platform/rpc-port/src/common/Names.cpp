// SPDX-License-Identifier: Apache-2.0
#include "common/Names.h"

#include "common/bounds.h"
#include "manifest/AppId.h"

#include <app_common.h>
#include <cerrno>
#include <cstdlib>
#include <memory>

namespace platform::rpc_port {

static_assert(kMaxAppId == application::kMaxAppId, "a hello has room for every app id");

bool isAppId(std::string_view text) {
  return application::isUsableAppId(text);
}

bool isPortName(std::string_view text) {
  return text.size() <= kMaxPortName && application::isUsableAppId(text);
}

std::string ownAppId() {
  char *id = nullptr;
  if (app_get_id(&id) != APP_ERROR_NONE || id == nullptr) {
    return {};
  }
  const std::unique_ptr<char, decltype(&std::free)> owned(id, &std::free);
  return id;
}

std::string ownSenderName() {
  std::string id = ownAppId();
  if (isAppId(id)) {
    return id;
  }
  const std::string_view program = program_invocation_short_name;
  return std::string(isAppId(program) ? program : "unknown");
}

} // namespace platform::rpc_port
