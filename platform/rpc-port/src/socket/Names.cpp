// SPDX-License-Identifier: Apache-2.0
#include "socket/Names.h"

#include "common/bounds.h"

#include <algorithm>
#include <app_common.h>
#include <cerrno>
#include <cstdlib>
#include <memory>

namespace platform::rpc_port {

namespace {

bool isFileName(std::string_view text, std::size_t maxSize) {
  const auto isForbidden = [](char c) {
    return c == '/' || static_cast<unsigned char>(c) < ' ' || c == '\x7f';
  };
  return !text.empty() && text.size() <= maxSize && text != "." && text != ".."
         && std::none_of(text.begin(), text.end(), isForbidden);
}

} // namespace

bool isAppId(std::string_view text) {
  return isFileName(text, kMaxAppId);
}

bool isPortName(std::string_view text) {
  return isFileName(text, kMaxPortName);
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
