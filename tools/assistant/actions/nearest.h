// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_NEAREST_H
#define NORIX_ASSISTANT_ACTIONS_NEAREST_H

#include <string>
#include <vector>

namespace norix::assistant::actions {

/**
 * @brief The name that was probably meant by one that does not exist.
 * @return The known name with the fewest letters added, dropped or changed; empty when even that
 *         one differs by more than a third of its letters
 */
std::string nearest(const std::string &name, const std::vector<std::string> &known);

/** @brief ", did you mean 'maximum'?", or nothing: to end a sentence about an unknown name. */
std::string suggestion(const std::string &name, const std::vector<std::string> &known);

} // namespace norix::assistant::actions

#endif
