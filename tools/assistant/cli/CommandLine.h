// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_COMMANDLINE_H
#define NORIX_ASSISTANT_CLI_COMMANDLINE_H

#include "assistant/cli/ExitStatus.h"
#include "assistant/cli/Options.h"

#include <optional>

namespace norix::assistant::cli {

// Either what to do, or, when help, the version or an error has been printed, how to end.
struct Parsed {
  std::optional<Options> options;
  ExitStatus status = ExitStatus::Answered;
};

Parsed parseCommandLine(int argc, const char *const *argv);

} // namespace norix::assistant::cli

#endif
