// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_EXCHANGEOUTCOME_H
#define NORIX_ASSISTANT_CLI_EXCHANGEOUTCOME_H

#include "assistant/cli/Console.h"
#include "assistant/cli/Exchange.h"
#include "assistant/client/Error.h"
#include "assistant/client/Response.h"

namespace norix::assistant::cli {

/// What the sentences about an exchange say about it.
Subject subjectOf(const ExchangeOptions &options, const Request &request);

Outcome outcomeOf(Failure failure);

/// How a command ends that got this response.
Ending endingOf(const Response &response, Subject subject);

/// How a command ends that got none.
Ending failure(Outcome outcome, const Subject &subject);

/// "these do: org.example.light, org.example.music", or that nobody does.
std::string describeListeners();

} // namespace norix::assistant::cli

#endif
