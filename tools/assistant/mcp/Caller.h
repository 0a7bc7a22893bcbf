// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_CALLER_H
#define NORIX_ASSISTANT_MCP_CALLER_H

#include "assistant/mcp/message.h"

namespace norix::assistant::mcp {

/// Who sent a request, as far as the protocol tells.
struct Caller {
  Json id;
  bool modern = false;      ///< Without handshake: every request says all about itself.
  bool elicitation = false; ///< The client can ask its user to fill in a form.
  Json progressToken;       ///< Null: no progress is wanted.
};

} // namespace norix::assistant::mcp

#endif
