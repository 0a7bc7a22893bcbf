// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_FINDING_H
#define NORIX_ASSISTANT_TRACE_FINDING_H

#include <string>

namespace norix::assistant::trace {

/// A mistake of an application that explains a silence: what happened, and what to do about it.
struct Finding {
  /// The kind of mistake, for scripts: lower case with hyphens. The manual lists them all.
  std::string word;
  /// One sentence that names what is concerned, what happened and what to do. Texts of the
  /// application stand in it as they are; escape them for a terminal with visible().
  std::string sentence;
};

} // namespace norix::assistant::trace

#endif
