// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_SHRINK_H
#define NORIX_ASSISTANT_CERTIFY_SHRINK_H

#include <functional>
#include <string>

namespace norix::assistant::certify {

/// Looks for the smallest text that fails, from one that does: fewer members, shorter texts,
/// numbers nearer to 0; or, of what is not JSON, fewer characters.
///
/// @param fails     whether a text fails
/// @param attempts  how often that may be tried
std::string shrink(std::string text, const std::function<bool(const std::string &)> &fails,
                   int attempts);

} // namespace norix::assistant::certify

#endif
