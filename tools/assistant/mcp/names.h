// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_NAMES_H
#define NORIX_ASSISTANT_MCP_NAMES_H

#include <set>
#include <string>

namespace norix::assistant::mcp {

/// Makes tool names that every known client takes: letters, digits and underscores, at most 40.
class Names {
public:
  /// The name of an application's action; equal ones are numbered from 2.
  std::string make(const std::string &appId, const std::string &action);

private:
  std::set<std::string> _taken;
};

} // namespace norix::assistant::mcp

#endif
