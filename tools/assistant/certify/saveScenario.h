// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_SAVESCENARIO_H
#define NORIX_ASSISTANT_CERTIFY_SAVESCENARIO_H

#include <string>

namespace norix::assistant::certify {

class Examination;

/// Writes a scenario that sends an action these parameters, and expects an answer and the
/// application to be well afterwards.
/// @return Its path
/// @throw std::runtime_error when it cannot be written
std::string saveScenario(Examination &examination, const std::string &action,
                         const std::string &params);

} // namespace norix::assistant::certify

#endif
