// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_EXCHANGE_H
#define NORIX_ASSISTANT_CLI_EXCHANGE_H

#include "assistant/cli/Console.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/client/Request.h"

namespace norix::assistant::cli {

/// Sends one request and waits for its answer.
Ending exchange(const ExchangeOptions &options, Request request, Console &console);

} // namespace norix::assistant::cli

#endif
