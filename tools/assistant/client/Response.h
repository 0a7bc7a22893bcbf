// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_RESPONSE_H
#define NORIX_ASSISTANT_CLIENT_RESPONSE_H

#include "assistant/client/BundlePtr.h"

#include <cstdint>
#include <string>

namespace norix::assistant {

/** @brief What an application answered: a text, or why there is none. Move-only. */
class Response {
public:
  /**
   * @brief Reads a response bundle, and takes it over.
   * @details The keys may stand in any order, and further keys do not disturb.
   * @throw Error with Failure::Malformed, naming the key that is missing or wrong
   */
  explicit Response(BundlePtr content);

  /** @brief The id of the request that is answered. */
  std::uint64_t requestId() const { return _requestId; }

  /** @brief Whether the application answered; otherwise the library did in its place. */
  bool succeeded() const { return _succeeded; }

  /** @brief Whether this answers a state request; otherwise an action request. */
  bool isState() const { return _isState; }

  /** @brief The action's result or the application's state; empty in a failure. */
  const std::string &text() const { return _text; }

  /** @brief Why the request failed; empty in a success. */
  const std::string &statusMessage() const { return _statusMessage; }

  /** @brief The bundle as it came, borrowed. */
  bundle *content() const { return _content.get(); }

private:
  void readStatus();
  void readText();
  void readRequestId();

  BundlePtr _content;
  std::uint64_t _requestId = 0;
  bool _succeeded = false;
  bool _isState = false;
  std::string _text;
  std::string _statusMessage;
};

} // namespace norix::assistant

#endif
