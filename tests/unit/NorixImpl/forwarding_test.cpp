// SPDX-License-Identifier: Apache-2.0
//
// The six operations that the core object passes on while it is initialised.
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::platform;

void noState(void * /*handle*/, void * /*data*/) {}
void noAction(void * /*handle*/, bundle * /*params*/, void * /*data*/) {}

class TheCore : public fake::ReadyLibraryTest {};

TEST_F(TheCore, LogsARegistrationForStatesOnceMore) {
  EXPECT_EQ(norix_set_app_state_request_cb(noState, nullptr), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine("StateRequestImpl.cpp", "setAppStateRequestCb",
                                           "App State Request cb has been set"),
                                    IsLine("NorixImpl.cpp", "setAppStateRequestCb",
                                           "App State Request cb has been set")}));
}

TEST_F(TheCore, LogsARemovalForStatesOnceMore) {
  EXPECT_EQ(norix_unset_app_state_request_cb(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine("StateRequestImpl.cpp", "unsetAppStateRequestCb",
                                           "App State Request Cb has been unset"),
                                    IsLine("NorixImpl.cpp", "unsetAppStateRequestCb",
                                           "App State Request Cb has been unset")}));
}

TEST_F(TheCore, LogsARegistrationForStatesThatFailedAsWell) {
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(norix_set_app_state_request_cb(noState, nullptr), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(
      logLines(),
      LinesAre(
          {IsLine("StateRequestImpl.cpp", "setAppStateRequestCb", "StateRequestInfo is null"),
           IsLine("NorixImpl.cpp", "setAppStateRequestCb", "App State Request cb has been set")}));
}

TEST_F(TheCore, PassesTheRestOnWithoutAWord) {
  int unknown = 50;

  EXPECT_EQ(norix_set_action_execution_cb("play", noAction, nullptr), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_unset_action_execution_cb("play"), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_complete_action_execution(&unknown, "x"), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_complete_app_state_request(&unknown, "x"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("ActionRequestImpl.cpp", "setActionExecutionCb",
                               "'%s' Action Execution cb has been set",
                               "'play' Action Execution cb has been set"),
                        IsLine("ActionRequestImpl.cpp", "unsetExecuteActionCb",
                               "'%s' Action Execution cb has been unset",
                               "'play' Action Execution cb has been unset"),
                        IsLine("ActionRequestImpl.cpp", "completeActionExecution",
                               "Couldn't find requestId corresponding to actionHandler %d",
                               "Couldn't find requestId corresponding to actionHandler 50"),
                        IsLine("StateRequestImpl.cpp", "completeAppStateRequest",
                               "Couldn't find requestId corresponding to actionHandler %d",
                               "Couldn't find requestId corresponding to actionHandler 50")}));
}

TEST_F(TheCore, ReturnsTheResultOfTheTargetUnchanged) {
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(norix_set_action_execution_cb("play", noAction, nullptr),
            NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(norix_complete_app_state_request(nullptr, "x"), NORIX_ERROR_INVALID_PARAMETER);
}

} // namespace
