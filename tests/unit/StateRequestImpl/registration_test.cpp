// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "StateRequestImpl/StateRequestImpl.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

namespace {

using fake::IsLine;
using fake::library;
using fake::LinesAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::StateRequestImpl;
using testing::ElementsAre;
using testing::IsEmpty;

// The callbacks that were called, by the user data that they got.
std::vector<int> called;

void noteCall(void * /*handle*/, void *number) {
  const fake::OutsideLibrary outside;
  called.push_back(*static_cast<int *>(number));
}

class TheStateCallback : public fake::ReadyLibraryTest {
protected:
  TheStateCallback() { called.clear(); }

  // The object's own results and lines, without those of the core in front of it.
  static int set(norix_app_state_request_cb callback, void *data) {
    return library(
        [=] { return StateRequestImpl::getInstance()->setAppStateRequestCb(callback, data); });
  }
  static int unset() {
    return library([] { return StateRequestImpl::getInstance()->unsetAppStateRequestCb(); });
  }

  // A request that calls the registered callback and is not answered.
  void request() {
    assistant.asksForState(1);
    library([] {
      StateRequestImpl::getInstance()->deleteTimer();
      return 0;
    });
  }

  int one = 1;
  int two = 2;
};

TEST_F(TheStateCallback, IsRegistered) {
  EXPECT_EQ(set(noteCall, &one), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, "setAppStateRequestCb",
                                           "App State Request cb has been set")}));
  request();
  EXPECT_THAT(called, ElementsAre(1));
}

TEST_F(TheStateCallback, IsReplacedByASecondRegistration) {
  set(noteCall, &one);
  forgetCalls();

  EXPECT_EQ(set(noteCall, &two), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), 0); // the record is used again
  request();
  EXPECT_THAT(called, ElementsAre(2));
}

TEST_F(TheStateCallback, IsTakenAway) {
  set(noteCall, &one);
  forgetCalls();

  EXPECT_EQ(unset(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine(kFile, "unsetAppStateRequestCb",
                                           "App State Request Cb has been unset")}));
  request();
  EXPECT_THAT(called, IsEmpty());
}

TEST_F(TheStateCallback, IsTakenAwayAlsoWhenThereIsNone) {
  EXPECT_EQ(unset(), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"App State Request Cb has been unset"}));
}

TEST_F(TheStateCallback, IsTakenAwayByANullCallback) {
  set(noteCall, &one);
  forgetCalls();

  EXPECT_EQ(set(nullptr, &one), NORIX_ERROR_NONE);

  EXPECT_THAT(
      logLines(),
      LinesAre({IsLine(kFile, "unsetAppStateRequestCb", "App State Request Cb has been unset"),
                IsLine(kFile, "setAppStateRequestCb", "App State Request cb has been set")}));
  request();
  EXPECT_THAT(called, IsEmpty());
}

TEST_F(TheStateCallback, IsThereWhenItIsSaidToBeSet) {
  inside("dlog_print(App State Request cb has been set)", [this] { request(); });

  set(noteCall, &one);

  EXPECT_THAT(called, ElementsAre(1));
}

TEST_F(TheStateCallback, IsGoneWhenItIsSaidToBeUnset) {
  set(noteCall, &one);
  inside("dlog_print(App State Request Cb has been unset)", [this] { request(); });

  unset();

  EXPECT_THAT(called, IsEmpty());
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateFailure("App state request callback not registered", 1)}));
}

TEST_F(TheStateCallback, NeedsMemory) {
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(set(noteCall, &one), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine(kFile, "setAppStateRequestCb", "StateRequestInfo is null")}));
  request();
  EXPECT_THAT(called, IsEmpty());
}

TEST_F(TheStateCallback, IsForgottenWithDeinitialisation) {
  set(noteCall, &one);
  forgetCalls();

  EXPECT_EQ(library([] { return StateRequestImpl::getInstance()->deinitialize(); }), 0);

  EXPECT_THAT(log(), IsEmpty());
  request();
  EXPECT_THAT(called, IsEmpty());
}

TEST_F(TheStateCallback, IsUntouchedByInitialize) {
  set(noteCall, &one);

  EXPECT_EQ(library([] { return StateRequestImpl::getInstance()->initialize(); }), 0);

  request();
  EXPECT_THAT(called, ElementsAre(1));
}

TEST_F(TheStateCallback, MayTakeItselfAway) {
  app.registersForState();
  app.onState = [this](const auto &) {
    EXPECT_EQ(norix_unset_app_state_request_cb(), NORIX_ERROR_NONE);
    EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  };

  assistant.asksForState(1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("state", 1)}));
}

TEST_F(TheStateCallback, MayReplaceItself) {
  app.registersForState();
  app.onState = [this](const auto &) { set(noteCall, &one); };
  assistant.asksForState(1);

  request();

  EXPECT_THAT(called, ElementsAre(1));
}

} // namespace
