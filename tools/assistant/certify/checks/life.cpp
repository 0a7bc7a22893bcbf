// SPDX-License-Identifier: Apache-2.0
//
// Starting, ending, and starting again.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/launch/exitStatus.h"

#include <csignal>

namespace norix::assistant::certify {
void checkStarts(Examination &examination, Verdicts &verdicts) {
  examination.endApplication();
  try {
    const Application application(examination.target(), examination.launchOptions());
    verdicts.pass();
  } catch (const launch::LaunchError &error) {
    verdicts.fail(error.what());
  }
}

void checkEnds(Examination &examination, Verdicts &verdicts) {
  const int status = examination.ordinaryUse().endStatus;
  if (status == 0) {
    verdicts.pass();
  } else if (status == launch::kSignalStatus + SIGKILL) {
    verdicts.fail("told to end with SIGTERM, the application ran on for two seconds, until it was "
                  "killed");
  } else if (status > launch::kSignalStatus) {
    verdicts.fail("told to end with SIGTERM, the application died of signal "
                  + std::to_string(status - launch::kSignalStatus));
  } else {
    verdicts.fail("told to end with SIGTERM, the application ended with status "
                  + std::to_string(status));
  }
}

void checkRestarts(Examination &examination, Verdicts &verdicts) {
  examination.start()->kill();
  try {
    Application again(examination.target(), examination.launchOptions());
    const Reply reply = again.pulse();
    if (reply.isAnswered()) {
      verdicts.pass();
    } else {
      verdicts.fail("started again after SIGKILL, a request for the state " + reply.text);
    }
  } catch (const launch::LaunchError &error) {
    verdicts.fail("after SIGKILL the application does not start again: "
                  + std::string(error.what()));
  }
}

} // namespace norix::assistant::certify
