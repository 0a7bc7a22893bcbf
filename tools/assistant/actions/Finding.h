// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_FINDING_H
#define NORIX_ASSISTANT_ACTIONS_FINDING_H

#include "assistant/actions/LocatedJson.h"

#include <string>
#include <vector>

namespace norix::assistant::actions {

/** @brief Whether a declaration cannot be used as it is, or could be better. */
enum class Severity { Error, Warning };

/** @brief One thing that is wrong in a file of declarations. */
struct Finding {
  Severity severity = Severity::Error;
  Position position;   /**< Where it stands in the file. */
  std::string pointer; /**< Where it stands in the document, a JSON pointer. */
  std::string text;    /**< What is wrong, and what to do about it. */

  /** @brief The finding as compilers write theirs: "3:14: error: …". */
  std::string toString() const {
    return std::to_string(position.line) + ":" + std::to_string(position.column)
           + (severity == Severity::Error ? ": error: " : ": warning: ") + text;
  }
};

using Findings = std::vector<Finding>;

} // namespace norix::assistant::actions

#endif
