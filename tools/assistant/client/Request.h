// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_REQUEST_H
#define NORIX_ASSISTANT_CLIENT_REQUEST_H

#include "assistant/client/BundlePtr.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace norix::assistant {

/** @brief The action id that asks for the application's state instead of an action. */
inline constexpr const char *kStateActionId = "getAppContext";

/** @brief One question to an application: what is your state, or execute this action. */
struct Request {
  /** The action, or #kStateActionId. */
  std::string actionId;
  /** Free text for the application's use; the library passes it on. */
  std::string actionType;
  /** The parameters, in whatever form the application knows; norix-assistant sends JSON. */
  std::string actionParams;
  /** Comes back in the response. Choose one that no other pending request has. */
  std::uint64_t requestId = 0;
  /** Further texts of the bundle, by key; none of those above. */
  std::vector<std::pair<std::string, std::string>> furtherKeys = {};

  /** @brief Makes the bundle that goes over the wire: three strings, and the id as its 8 bytes. */
  BundlePtr toBundle() const;
};

/** @brief Makes a request for the application's state, with a fresh id. */
Request stateRequest();

/** @brief Makes a request to execute an action, with a fresh id. */
Request actionRequest(std::string actionId, std::string actionParams = {});

/**
 * @brief Draws a request id.
 * @details Ids count up from a random start, so that those of two assistants, or of one that was
 *          started twice, do not meet.
 */
std::uint64_t nextRequestId();

} // namespace norix::assistant

#endif
