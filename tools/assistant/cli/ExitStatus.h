// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_EXITSTATUS_H
#define NORIX_ASSISTANT_CLI_EXITSTATUS_H

namespace norix::assistant::cli {

// What norix-assistant ends with. Scripts rely on the numbers; the man page lists them.
enum class ExitStatus {
  Answered = 0,
  FailureResponse = 1,
  WrongUsage = 2,
  CannotConnect = 3,
  Refused = 4,
  NoAnswer = 5,
  Disconnected = 6,
  Malformed = 7,
  CannotLaunch = 8,
  Internal = 9,
  // launch --strict: the application made mistakes.
  FindingsSeen = 10
};

} // namespace norix::assistant::cli

#endif
