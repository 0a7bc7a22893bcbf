// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_RESULTS_H
#define NORIX_ASSISTANT_MCP_RESULTS_H

#include "assistant/mcp/Catalogue.h"

#include <cstddef>
#include <string>

namespace norix::assistant::mcp {

/// An answer longer than this is cut, and says so: agents cannot use more, and clients drop it.
inline constexpr std::size_t kAnswerBytes = std::size_t{1} << 20U;

/// A result that tells the model what went wrong, so that it can do better.
Json toolError(const std::string &text);

/// The result of a tool call.
Json toolResult(const Tool &tool, const Outcome &outcome);

/// The contents of a state resource. @throw RpcError when there is no answer
Json resourceContents(const Resource &resource, const Outcome &outcome);

/**
 * @brief A text of an application as an agent may see it.
 * @details Control characters other than newline and tab become visible escapes, bytes that are not
 *          UTF-8 become U+FFFD, and a text over #kAnswerBytes is cut between two characters.
 */
std::string presentable(const std::string &text);

} // namespace norix::assistant::mcp

#endif
