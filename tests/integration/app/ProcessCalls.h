// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_PROCESSCALLS_H
#define NORIX_TESTS_INTEGRATION_PROCESSCALLS_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace integration {

// Commands beside the library's calls: fork, start programs, read the clock.
// Returns nothing for any other command.
std::optional<int> callProcess(const std::string &name, const nlohmann::json &command);

} // namespace integration

#endif
