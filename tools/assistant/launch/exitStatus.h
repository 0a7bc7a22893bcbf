// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_EXITSTATUS_H
#define NORIX_ASSISTANT_LAUNCH_EXITSTATUS_H

#include <string>
#include <sys/wait.h>

namespace norix::assistant::launch {

/// What shells add to the number of the signal that ended a process.
constexpr int kSignalStatus = 128;

/// The exit status that a shell would give for what waitpid() said.
inline int exitStatus(int waited) {
  return WIFSIGNALED(waited) ? kSignalStatus + WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// What an exit status means: "ended with status 3", "was ended by signal 11".
inline std::string describeExit(int status) {
  return status > kSignalStatus ? "was ended by signal " + std::to_string(status - kSignalStatus)
                                : "ended with status " + std::to_string(status);
}

} // namespace norix::assistant::launch

#endif
