// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_PARAMETERS_H
#define NORIX_ASSISTANT_CLI_PARAMETERS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace norix::assistant::cli {

// A parameter that cannot be sent; what() says which and why.
class ParameterError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The text of a JSON object with a member for each "key=value", in that order. A value that is a
// JSON number, true, false or null is taken over digit for digit; any other becomes a string.
std::string toJsonObject(const std::vector<std::string> &pairs);

} // namespace norix::assistant::cli

#endif
