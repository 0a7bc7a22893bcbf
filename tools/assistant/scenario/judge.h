// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_JUDGE_H
#define NORIX_ASSISTANT_SCENARIO_JUDGE_H

#include "assistant/report/Suite.h"
#include "assistant/scenario/Conversation.h"
#include "assistant/scenario/Scenario.h"
#include "assistant/scenario/Variables.h"

#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// Compares what came with what was expected: one message for everything that differs. Log lines
/// and findings are left out, which come in their own time.
std::vector<report::Message> judge(const Expectation &expectation, const Observed &observed,
                                   const Variables &variables);

/// Keeps what a capture names. Nothing, or why it cannot be kept.
std::vector<report::Message> capture(const std::vector<Capture> &captures, const std::string &text,
                                     Variables &variables);

} // namespace norix::assistant::scenario

#endif
