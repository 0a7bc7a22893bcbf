// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_CONTENTS_H
#define NORIX_TESTS_INTEGRATION_CONTENTS_H

#include <bundle.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace integration {

// The keys and values of a bundle in its order: the text of a string, the bytes of a byte entry.
using Contents = std::vector<std::pair<std::string, std::string>>;

Contents contentsOf(bundle *content);

// The bytes of a request id, as they stand in a bundle.
std::string bytesOf(std::uint64_t requestId);

} // namespace integration

#endif
