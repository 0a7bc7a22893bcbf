// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_OUTCOMES_H
#define NORIX_ASSISTANT_SCENARIO_OUTCOMES_H

#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// What can come of a request: the words that norix-assistant has for it in --json.
inline const std::vector<std::string> kOutcomeWords = {"answered",         "action-not-registered",
                                                       "action-timed-out", "state-not-registered",
                                                       "state-timed-out",  "failed",
                                                       "nobody-listens",   "refused",
                                                       "no-answer",        "connection-lost",
                                                       "malformed",        "busy",
                                                       "superseded"};

} // namespace norix::assistant::scenario

#endif
