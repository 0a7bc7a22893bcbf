// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_CONSENT_H
#define NORIX_ASSISTANT_MCP_CONSENT_H

#include "assistant/mcp/Catalogue.h"

#include <deque>
#include <string>
#include <utility>

namespace norix::assistant::mcp {

/// The form that asks the user whether to execute a tool with these arguments.
Json consentForm(const Tool &tool, const Json &arguments);

/// Whether the user's answer to that form says yes.
bool isConsent(const Json &answer);

/**
 * @brief Questions that a client of the handshake-less protocol takes to its user.
 * @details The client sends its request again with the user's answer and the token of the question.
 *          A token is good once, and only for the call that it was issued for.
 */
class Consent {
public:
  /// Issues the token of a question about a call.
  std::string issue(const Tool &tool, const Json &arguments);

  /// Takes a token back: whether it was issued for this call.
  bool redeem(const std::string &token, const Tool &tool, const Json &arguments);

private:
  std::deque<std::pair<std::string, std::string>> _open; // Token and call, the oldest first.
};

} // namespace norix::assistant::mcp

#endif
