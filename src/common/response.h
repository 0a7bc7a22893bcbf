// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_RESPONSE_H
#define NORIX_COMMON_RESPONSE_H

#include <bundle.h>

#include <string>

namespace norix {

/// The two kinds of response bundle; null when the platform cannot create one. The assistant relies
/// on the order of the keys.

/// The application's answer, under the key of its kind of request.
bundle *createAnswer(const char *key, const std::string &text, unsigned long long requestId);

/// A failure, with a message and an empty text under the key.
bundle *createFailure(const char *key, const char *message, unsigned long long requestId);

} // namespace norix

#endif
