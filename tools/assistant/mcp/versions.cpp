// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/versions.h"

#include <algorithm>
#include <array>

namespace norix::assistant::mcp {
namespace {

// With handshake, the newest first.
constexpr std::array<const char *, 4> kLegacyVersions = {"2025-11-25", "2025-06-18", "2025-03-26",
                                                         "2024-11-05"};

} // namespace

void requireModern(const Json &meta) {
  const Json &version = meta.at(kVersionKey);
  if (!version.is_string()) {
    throw RpcError(InvalidParams, std::string("\"") + kVersionKey + "\" in _meta must be a string");
  }
  if (version != kModernVersion) {
    throw RpcError(UnsupportedVersion,
                   "unsupported protocol version " + toLine(version)
                       + "; supported: " + kModernVersion,
                   {{"supported", Json::array({kModernVersion})}, {"requested", version}});
  }
  const auto capabilities = meta.find(kCapabilitiesKey);
  if (capabilities == meta.end() || !capabilities->is_object()) {
    throw RpcError(InvalidParams,
                   std::string("\"") + kCapabilitiesKey + "\" in _meta is required, an object");
  }
}

std::string legacyVersionFor(const std::string &requested) {
  const auto known = std::find(kLegacyVersions.begin(), kLegacyVersions.end(), requested);
  return known != kLegacyVersions.end() ? *known : kLegacyVersions.front();
}

Json supportedVersions() {
  Json versions = Json::array({kModernVersion});
  for (const char *legacy : kLegacyVersions) {
    versions.push_back(legacy);
  }
  return versions;
}

Json serverInfo(const std::string &version) {
  return {{"name", "norix-assistant"}, {"title", "Norix applications"}, {"version", version}};
}

} // namespace norix::assistant::mcp
