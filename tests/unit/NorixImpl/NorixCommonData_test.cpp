// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/NorixCommonData.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

namespace {

using norix::NorixCommonData;
using testing::Each;
using testing::IsEmpty;

TEST(TheRequestData, IsEmptyAtFirst) {
  const NorixCommonData common;

  EXPECT_EQ(common._requestId, 0U);
  EXPECT_EQ(common._actionHandlerIndex, 0);
  EXPECT_THAT(common._actionHandlers, Each(0));
  EXPECT_EQ(common._actionHandlers.size(), 100U);
  EXPECT_THAT(common._actionHandlerMap, IsEmpty());
  EXPECT_EQ(common._norixClientAppId, "");
}

TEST(TheRequestData, IsInitialised) {
  NorixCommonData common;

  EXPECT_EQ(common.initialize(), 0);

  EXPECT_EQ(common._requestId, 0xffffffffffffffffULL);
  EXPECT_EQ(common._actionHandlerIndex, 1);
  EXPECT_EQ(common._actionHandlers[0], 0);
  EXPECT_EQ(common._actionHandlers[1], 1);
  EXPECT_EQ(common._actionHandlers[99], 99);
}

TEST(TheRequestData, KeepsTheRestWhenItIsDeinitialised) {
  NorixCommonData common;
  common.initialize();
  common._actionHandlerMap[7] = {"play", 42};
  common._norixClientAppId = "client";

  EXPECT_EQ(common.deinitialize(), 0);

  EXPECT_EQ(common._requestId, 0xffffffffffffffffULL);
  EXPECT_EQ(common._actionHandlerIndex, 0);
  EXPECT_EQ(common._actionHandlers[99], 99);
  EXPECT_EQ(common._actionHandlerMap.size(), 1U);
  EXPECT_EQ(common._norixClientAppId, "client");
}

// The numbers that both kinds of request draw from.
class AHandleNumber : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
  }

  // The nth request is a state request when it is odd, an action otherwise.
  int numberOf(uint64_t nth) {
    if (nth % 2 != 0) {
      assistant.asksForState(nth);
      app.answersState("state");
      return app.stateRequests.back().number;
    }
    assistant.asksForAction("play", nth);
    app.answersAction("result");
    return app.actionRequests.back().number;
  }
};

TEST_F(AHandleNumber, CountsOverBothKindsOfRequestAndStartsAgainAfterAHundred) {
  std::vector<int> expected;
  std::vector<int> numbers;

  for (uint64_t nth = 1; nth <= 202; ++nth) {
    numbers.push_back(numberOf(nth));
    expected.push_back(static_cast<int>((nth + 1) % 100));
  }

  EXPECT_EQ(numbers, expected);
  EXPECT_EQ(numbers[0], 2);
  EXPECT_EQ(numbers[97], 99);
  EXPECT_EQ(numbers[98], 0);
  EXPECT_EQ(numbers[99], 1);
  EXPECT_EQ(numbers[100], 2);
}

TEST_F(AHandleNumber, IsReadThroughTheAddressOfItsSlot) {
  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.actionRequests.back().handle, &NorixCommonData::_instance->_actionHandlers[2]);
}

// A handle is its slot's address and nothing more: an application that keeps one for a hundred
// requests holds the handle of the latest.
TEST_F(AHandleNumber, IsAnotherRequestsAfterAHundred) {
  assistant.asksForAction("play", 1);
  void *const first = app.actionRequests.back().handle;
  for (uint64_t nth = 2; nth <= 100; ++nth) {
    assistant.asksForState(nth);
    EXPECT_NE(app.stateRequests.back().handle, first);
  }

  assistant.asksForAction("play", 101);

  EXPECT_EQ(app.actionRequests.back().handle, first);
  EXPECT_EQ(norix_complete_action_execution(first, "result"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), fake::ResponsesAre({fake::actionAnswer("result", 101)}));
}

TEST_F(AHandleNumber, IsNeverOfUseForAnotherNumber) {
  assistant.asksForAction("play", 1);
  for (uint64_t nth = 2; nth <= 100; ++nth) {
    assistant.asksForAction("play", nth);
    EXPECT_EQ(norix_complete_action_execution(app.actionRequests[0].handle, "x"), NORIX_ERROR_NONE);
    EXPECT_EQ(norix_complete_app_state_request(app.actionRequests[0].handle, "x"),
              NORIX_ERROR_NONE);
  }

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AHandleNumber, BelongsToTheLatestRequestAlone) {
  assistant.asksForState(1);
  assistant.asksForAction("play", 2);

  const auto &map = NorixCommonData::_instance->_actionHandlerMap;
  ASSERT_EQ(map.size(), 1U);
  EXPECT_EQ(map.at(3), std::make_pair(std::string("play"), 2ULL));
}

TEST_F(AHandleNumber, IsNotDrawnWithoutACallback) {
  (void)norix_unset_app_state_request_cb();
  assistant.asksForState(1);
  assistant.asksForAction("late", 2);

  assistant.asksForAction("play", 3);

  EXPECT_EQ(app.actionRequests.back().number, 2);
}

} // namespace
