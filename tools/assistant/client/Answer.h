// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_ANSWER_H
#define NORIX_ASSISTANT_CLIENT_ANSWER_H

#include "assistant/client/Delegate.h"
#include "assistant/client/Response.h"

#include <string>

namespace norix::assistant {

/** @brief One Callback message: a response, through which delegate, and from whom. */
struct Answer {
  Delegate delegate;
  std::string appId;
  Response response;
};

} // namespace norix::assistant

#endif
