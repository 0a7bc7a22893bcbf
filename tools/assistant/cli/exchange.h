// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_EXCHANGE_H
#define NORIX_ASSISTANT_CLI_EXCHANGE_H

#include "assistant/cli/ExitStatus.h"
#include "assistant/cli/Options.h"

namespace norix::assistant::cli {

// The commands state and run: one request, its answer on standard output.
ExitStatus exchange(const Options &options);

} // namespace norix::assistant::cli

#endif
