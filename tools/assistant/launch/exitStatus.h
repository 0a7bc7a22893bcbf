// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_EXITSTATUS_H
#define NORIX_ASSISTANT_LAUNCH_EXITSTATUS_H

#include <sys/wait.h>

namespace norix::assistant::launch {

/// What shells add to the number of the signal that ended a process.
constexpr int kSignalStatus = 128;

/// The exit status that a shell would give for what waitpid() said.
inline int exitStatus(int waited) {
  return WIFSIGNALED(waited) ? kSignalStatus + WTERMSIG(waited) : WEXITSTATUS(waited);
}

} // namespace norix::assistant::launch

#endif
