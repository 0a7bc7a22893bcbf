// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_CLIENTS_H
#define NORIX_ASSISTANT_MCP_CLIENTS_H

#include <string>
#include <vector>

namespace norix::assistant::mcp {

/// The names of the clients whose configuration clientConfig() knows.
std::vector<std::string> knownClients();

/// What makes a client start the bridge.
struct ClientConfig {
  std::string place; ///< The file that it belongs into, or what to do with it.
  std::string text;
};

/**
 * @brief The configuration of a client.
 * @param[in] client     One of knownClients()
 * @param[in] arguments  What follows "norix-assistant mcp"
 */
ClientConfig clientConfig(const std::string &client, const std::vector<std::string> &arguments);

} // namespace norix::assistant::mcp

#endif
