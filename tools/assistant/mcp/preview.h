// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_PREVIEW_H
#define NORIX_ASSISTANT_MCP_PREVIEW_H

#include "assistant/mcp/Bridge.h"

#include <string>
#include <vector>

namespace norix::assistant::mcp {

/// What an agent will see of some applications, and what makes that worse than it could be.
struct Preview {    // NOLINT(bugprone-exception-escape): moving JSON asserts, and never throws.
  std::string text; ///< For people: a paragraph per tool, and the warnings.
  std::vector<std::string> warnings;
  Json facts; ///< The same for programs.
};

Preview previewOf(const std::vector<Offered> &applications, bool readOnly);

} // namespace norix::assistant::mcp

#endif
