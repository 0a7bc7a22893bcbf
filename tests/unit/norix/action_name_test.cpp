// SPDX-License-Identifier: Apache-2.0
#include "exported_calls.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include "NorixImpl/NorixCommonData.h"

#include <norix.h>

#include <cstdlib>
#include <stdexcept>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;

constexpr const char *kUnknown = "BUILT_IN NORIX_ERROR_INVALID_PARAMETER";

class AnActionName : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
    app.registersForState();
  }

  std::string name;
};

TEST_F(AnActionName, IsTheActionIdOfTheLatestActionRequest) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(getActionName(app.actionRequests.back().handle, &name), NORIX_ERROR_NONE);

  EXPECT_EQ(name, "play");
  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "getActionName",
                                           "In getActionName, Requested actionId %s",
                                           "In getActionName, Requested actionId play")}));
}

TEST_F(AnActionName, IsGetAppContextForAStateRequest) {
  assistant.asksForState(1);

  EXPECT_EQ(getActionName(app.stateRequests.back().handle, &name), NORIX_ERROR_NONE);

  EXPECT_EQ(name, "getAppContext");
  expectLeft(fake::DeliberateLeak::StateTimer);
}

TEST_F(AnActionName, IsAnIndependentCopyEachTime) {
  char *first = nullptr;
  char *second = nullptr;
  assistant.asksForAction("play", 1);

  norix_get_action_name(app.actionRequests.back().handle, &first);
  norix_get_action_name(app.actionRequests.back().handle, &second);

  EXPECT_STREQ(first, "play");
  EXPECT_STREQ(second, "play");
  EXPECT_NE(first, second);
  std::free(first);
  std::free(second);
}

TEST_F(AnActionName, IsKnownInsideTheCallback) {
  app.onAction = [this](const fake::App::Request &request) {
    EXPECT_EQ(getActionName(request.handle, &name), NORIX_ERROR_NONE);
  };

  assistant.asksForAction("play", 1);

  EXPECT_EQ(name, "play");
}

TEST_F(AnActionName, IsForgottenWhenTheNextRequestArrives) {
  assistant.asksForAction("play", 1);
  assistant.asksForAction("play", 2);
  forgetCalls();

  EXPECT_EQ(getActionName(app.actionRequests[0].handle, &name), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "getActionName",
                                           "In getActionName, entry not found"),
                                    IsLine("norix.cpp", "norix_get_action_name", kUnknown)}));
  EXPECT_EQ(getActionName(app.actionRequests[1].handle), NORIX_ERROR_NONE);
}

TEST_F(AnActionName, IsNullForAnUnknownHandle) {
  int unknown = 5;
  char untouched = 0;
  char *result = &untouched;
  assistant.asksForAction("play", 1);

  EXPECT_EQ(norix_get_action_name(&unknown, &result), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_EQ(result, nullptr);
}

TEST_F(AnActionName, IsNotLookedUpWithoutARequest) {
  forgetCalls();

  EXPECT_EQ(getActionName(nullptr, &name), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), TextsAre({"In getActionName, entry not found", kUnknown}));
}

TEST_F(AnActionName, IsUnknownForANullHandleWithARequestInProgress) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(getActionName(nullptr, &name), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), TextsAre({"In getActionName, entry not found", kUnknown}));
}

// Nobody can be asked to read there.
void *const kNowhere = reinterpret_cast<void *>(1);

TEST_F(AnActionName, IsNotLookedUpThroughAHandleWithoutARequest) {
  forgetCalls();

  EXPECT_EQ(getActionName(kNowhere, &name), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), TextsAre({"In getActionName, entry not found", kUnknown}));
}

TEST_F(AnActionName, IsNotLookedUpWithoutAPlaceToBeStored) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(norix_get_action_name(kNowhere, nullptr), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), TextsAre({"action_id is null"}));
}

TEST_F(AnActionName, NeedsAPlaceToBeStored) {
  forgetCalls();

  EXPECT_EQ(norix_get_action_name(nullptr, nullptr), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("norix.cpp", "norix_get_action_name", "action_id is null")}));
}

TEST_F(AnActionName, IsNullWithSuccessWhenTheCopyFindsNoMemory) {
  char untouched = 0;
  char *result = &untouched;
  assistant.asksForAction("play", 1);
  platform().faults.fail("strdup");

  EXPECT_EQ(norix_get_action_name(app.actionRequests.back().handle, &result), NORIX_ERROR_NONE);

  EXPECT_EQ(result, nullptr);
}

TEST_F(AnActionName, IsEmptyForARequestWithAnEmptyActionId) {
  app.registersFor("");
  assistant.asksForAction("", 1);

  EXPECT_EQ(getActionName(app.actionRequests.back().handle, &name), NORIX_ERROR_INVALID_PARAMETER);
}

TEST_F(AnActionName, IsUnknownAfterDeinitialisation) {
  assistant.asksForAction("play", 1);
  app.deinitialises();

  EXPECT_EQ(getActionName(app.actionRequests.back().handle), NORIX_ERROR_INVALID_PARAMETER);
}

TEST_F(AnActionName, OfAVeryLongActionIdIsComplete) {
  const std::string longId(1 << 20, 'a');
  app.registersFor(longId);
  assistant.asksForAction(longId, 1);

  EXPECT_EQ(getActionName(app.actionRequests.back().handle, &name), NORIX_ERROR_NONE);

  EXPECT_EQ(name, longId);
}

class AnActionNameBeforeInitialisation : public fake::LibraryTest {};

TEST_F(AnActionNameBeforeInitialisation, IsNull) {
  char untouched = 0;
  char *result = &untouched;

  EXPECT_EQ(norix_get_action_name(nullptr, &result), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_EQ(result, nullptr);
}

TEST_F(AnActionNameBeforeInitialisation, ReadsNoHandle) {
  EXPECT_EQ(getActionName(kNowhere), NORIX_ERROR_INVALID_PARAMETER);
}

TEST_F(AnActionNameBeforeInitialisation, ThrowsWithoutTheRequestData) {
  (void)norix_deinitialize();
  platform().faults.fail(fake::kNothrowNew); // the request data's, the core object is there
  forgetCalls();

  EXPECT_THROW(getActionName(nullptr), std::logic_error);

  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "getActionName",
                                           "NorixCommonData instance is null")}));
}

} // namespace
