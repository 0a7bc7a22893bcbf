// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_RESPONSE_H
#define NORIX_COMMON_RESPONSE_H

#include <bundle.h>

#include <string>

namespace norix {

// The two response bundles, null when the platform gives none. Both carry the id of the request in
// progress, and the assistant relies on the order of the keys.

// What the application answered, under the key of its kind of request.
bundle *createAnswer(const char *key, const std::string &text, unsigned long long requestId);

// Why the library answers in the application's place; the text under the key is empty.
bundle *createFailure(const char *key, const char *message, unsigned long long requestId);

} // namespace norix

#endif
