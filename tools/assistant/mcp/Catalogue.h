// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_CATALOGUE_H
#define NORIX_ASSISTANT_MCP_CATALOGUE_H

#include "assistant/actions/Declarations.h"
#include "assistant/client/Request.h"
#include "assistant/mcp/Work.h"
#include "assistant/mcp/message.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::mcp {

/// Says what is wrong with a value, in one sentence; nothing when it is as declared.
using Check = std::function<std::optional<std::string>(const Json &)>;

/// A tool as the agent sees it, and what it stands for.
struct Tool { // NOLINT(bugprone-exception-escape): moving JSON asserts, and never throws.
  std::string name;
  std::string appId;
  std::string actionId; ///< Of a state tool the id that asks for the state.
  std::string title;
  Json descriptor;           ///< Its entry in tools/list.
  bool needsConsent = false; ///< The user has to confirm each call.
  Check checkArguments;
  Check checkAnswer; ///< Empty when the form of the answer is not declared.
};

/// The state of one application.
struct Resource {
  std::string uri;
  std::string appId;
  Json descriptor;
};

/// A sample utterance.
struct Prompt {
  std::string name;
  std::string utterance;
  Json descriptor;
};

/// Everything the bridge offers, in the order in which it is listed.
struct Catalogue {
  std::vector<Tool> tools;
  std::vector<Resource> resources;
  std::vector<Prompt> prompts;
};

/// An application and what it declares, if anything.
struct DeclaredApplication {
  std::string appId;
  std::optional<actions::Declarations> declarations;
};

/**
 * @brief Makes the catalogue of some applications.
 * @details A tool's name is the last part of the application's id and the action's, made of
 * letters, digits and underscores and at most 40 long, which every known client takes; equal names
 *          are numbered, in the order of the declarations.
 * @param[in] readOnly  Leave out whatever changes anything
 */
Catalogue makeCatalogue(const std::vector<DeclaredApplication> &applications, bool readOnly);

/// The text of a prompt with its placeholders replaced. @throw RpcError when one is missing
std::string promptText(const Prompt &prompt, const Json &arguments);

} // namespace norix::assistant::mcp

#endif
