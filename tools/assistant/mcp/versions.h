// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_VERSIONS_H
#define NORIX_ASSISTANT_MCP_VERSIONS_H

#include "assistant/mcp/message.h"

#include <string>

namespace norix::assistant::mcp {

/// The revision without handshake that the bridge speaks.
inline constexpr const char *kModernVersion = "2026-07-28";

// Members of _meta.
inline constexpr const char *kVersionKey = "io.modelcontextprotocol/protocolVersion";
inline constexpr const char *kCapabilitiesKey = "io.modelcontextprotocol/clientCapabilities";
inline constexpr const char *kServerInfoKey = "io.modelcontextprotocol/serverInfo";
inline constexpr const char *kSubscriptionKey = "io.modelcontextprotocol/subscriptionId";

/// Checks the _meta of a request that names its version. @throw RpcError when it cannot be served
void requireModern(const Json &meta);

/// The revision that answers `initialize`: the one asked for if it is known, else the newest.
std::string legacyVersionFor(const std::string &requested);

/// Every revision that the bridge speaks, the newest first.
Json supportedVersions();

/// Who the bridge is.
Json serverInfo(const std::string &version);

} // namespace norix::assistant::mcp

#endif
