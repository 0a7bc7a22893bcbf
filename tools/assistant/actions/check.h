// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_CHECK_H
#define NORIX_ASSISTANT_ACTIONS_CHECK_H

#include "assistant/actions/LocatedJson.h"

#include <string>
#include <vector>

namespace norix::assistant::actions {

/** @brief Where a value does not have the form that was declared. */
struct Violation {
  std::string pointer;  /**< JSON pointer into the value; empty for the whole of it. */
  std::string expected; /**< "a number of at most 100" */
  std::string found;    /**< "400", "nothing" */

  /** @brief "/volume: expected a number of at most 100, found 400" */
  std::string toString() const;
};

/**
 * @brief Compares a value with a form, a schema of the subset that norix-actions(5) describes.
 * @param[in] form  One without errors, as parse() gives it
 * @return The violations, in the order of the form, at most 100; none when the value has the form
 */
std::vector<Violation> check(const Json &form, const Json &value);

} // namespace norix::assistant::actions

#endif
