// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_WORDS_H
#define NORIX_ASSISTANT_CLIENT_WORDS_H

#include "assistant/client/Error.h"
#include "assistant/client/Response.h"

namespace norix::assistant {

/**
 * @brief What came of a request in one word, for scripts: "answered", one for each of the library's
 *        four failure messages ("action-timed-out"), "failed" for any other message.
 */
const char *wordOf(const Response &response);

/** @brief The same for an exchange that failed: "refused". */
const char *wordOf(Failure failure);

} // namespace norix::assistant

#endif
