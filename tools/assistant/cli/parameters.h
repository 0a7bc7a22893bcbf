// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_PARAMETERS_H
#define NORIX_ASSISTANT_CLI_PARAMETERS_H

#include <string>
#include <vector>

namespace norix::assistant::cli {

/// The text of a JSON object with a member for each "key=value" and "key:=json", in that order. A
/// value that is a JSON number, true, false or null is taken over digit for digit; any other
/// becomes a string. What follows ":=" is taken over as it is. Throws UsageError.
std::string toJsonObject(const std::vector<std::string> &pairs);

/// The parameters that --params names: a text, "@FILE", or "-" for standard input. Throws
/// UsageError.
std::string readParams(const std::string &params);

} // namespace norix::assistant::cli

#endif
