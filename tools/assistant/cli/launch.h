// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_LAUNCH_H
#define NORIX_ASSISTANT_CLI_LAUNCH_H

#include "assistant/cli/ExitStatus.h"
#include "assistant/cli/Options.h"

namespace norix::assistant::cli {

// The command launch: starts an application, stays with it, and ends as it ends.
ExitStatus launch(const Options &options);

} // namespace norix::assistant::cli

#endif
