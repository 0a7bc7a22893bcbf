// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

#include <ostream>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::platform;
using fake::ResponsesAre;
using testing::ElementsAre;
using testing::IsEmpty;

auto isSet(const std::string &actionId) {
  return IsLine(kFile, "setActionExecutionCb", "'%s' Action Execution cb has been set",
                "'" + actionId + "' Action Execution cb has been set");
}

auto isUnset(const std::string &actionId) {
  return IsLine(kFile, "unsetExecuteActionCb", "'%s' Action Execution cb has been unset",
                "'" + actionId + "' Action Execution cb has been unset");
}

// The callbacks that were called, by the user data that they got.
std::vector<int> called;

void noteCall(void * /*handle*/, bundle * /*params*/, void *number) {
  const fake::OutsideLibrary outside;
  called.push_back(number == nullptr ? 0 : *static_cast<int *>(number));
}

void noteOtherCall(void * /*handle*/, bundle * /*params*/, void * /*number*/) {
  const fake::OutsideLibrary outside;
  called.push_back(-1);
}

class TheRegistry : public fake::ReadyLibraryTest {
protected:
  TheRegistry() { called.clear(); }

  static size_t blocks() { return fake::Heap::instance().blocks().size(); }

  // Whether a request for "play" reaches a callback at once.
  bool isRegistered() {
    const size_t before = called.size();
    assistant.asksForAction("play", 1);
    assistant.asksForState(2); // Ends its wait, also for a callback that is not registered.
    return called.size() != before;
  }

  int one = 1;
  int two = 2;
};

TEST_F(TheRegistry, RegistersACallback) {
  EXPECT_EQ(norix_set_action_execution_cb("play", noteCall, &one), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({isSet("play")}));
  assistant.asksForAction("play", 1);
  EXPECT_THAT(called, ElementsAre(1));
}

TEST_F(TheRegistry, GivesANullUserDataBack) {
  norix_set_action_execution_cb("play", noteCall, nullptr);

  assistant.asksForAction("play", 1);

  EXPECT_THAT(called, ElementsAre(0));
}

TEST_F(TheRegistry, KeepsTheLastOfTwoRegistrations) {
  norix_set_action_execution_cb("play", noteOtherCall, &one);
  const size_t before = blocks();

  EXPECT_EQ(norix_set_action_execution_cb("play", noteCall, &two), NORIX_ERROR_NONE);

  EXPECT_EQ(blocks(), before); // the first record was freed
  EXPECT_THAT(logLines(), LinesAre({isSet("play"), isSet("play")}));
  assistant.asksForAction("play", 1);
  EXPECT_THAT(called, ElementsAre(2));
}

TEST_F(TheRegistry, KeepsOneCallbackPerActionId) {
  norix_set_action_execution_cb("play", noteCall, &one);
  norix_set_action_execution_cb("Play", noteCall, &two);

  assistant.asksForAction("Play", 1);
  assistant.asksForAction("play", 2);

  EXPECT_THAT(called, ElementsAre(2, 1));
}

TEST_F(TheRegistry, TakesACallbackAway) {
  norix_set_action_execution_cb("play", noteCall, &one);
  forgetCalls();

  EXPECT_EQ(norix_unset_action_execution_cb("play"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({isUnset("play")}));
  EXPECT_FALSE(isRegistered());
}

TEST_F(TheRegistry, TakesACallbackAwayThatIsNotThere) {
  norix_set_action_execution_cb("play", noteCall, &one);
  forgetCalls();

  EXPECT_EQ(norix_unset_action_execution_cb("stop"), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({isUnset("stop")}));
  EXPECT_TRUE(isRegistered());
}

TEST_F(TheRegistry, TakesACallbackAwayWithANullCallback) {
  norix_set_action_execution_cb("play", noteCall, &one);
  forgetCalls();

  EXPECT_EQ(norix_set_action_execution_cb("play", nullptr, &one), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({isUnset("play"), isSet("play")}));
  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), 0);
  EXPECT_FALSE(isRegistered());
}

TEST_F(TheRegistry, SaysThatACallbackIsSetWhenItIs) {
  bool registered = false;
  inside("dlog_print('play' Action Execution cb has been set)",
         [&] { registered = isRegistered(); });

  norix_set_action_execution_cb("play", noteCall, &one);

  EXPECT_TRUE(registered);
}

TEST_F(TheRegistry, SaysThatACallbackIsTakenAwayWhenItIs) {
  bool registered = true;
  norix_set_action_execution_cb("play", noteCall, &one);
  inside("dlog_print('play' Action Execution cb has been unset)",
         [&] { registered = isRegistered(); });

  norix_unset_action_execution_cb("play");

  EXPECT_FALSE(registered);
}

TEST_F(TheRegistry, NeedsMemoryForARegistration) {
  norix_set_action_execution_cb("play", noteCall, &one);
  forgetCalls();
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(norix_set_action_execution_cb("play", noteCall, &two), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine(kFile, "setActionExecutionCb", "actionHandlerInfo is null")}));
  assistant.asksForAction("play", 1);
  EXPECT_THAT(called, ElementsAre(1)); // the earlier one still stands
}

TEST_F(TheRegistry, IsEmptiedByDeinitialisation) {
  norix_set_action_execution_cb("play", noteCall, &one);
  norix_set_action_execution_cb("stop", noteCall, &two);

  app.deinitialises();
  app.initialises();
  assistant.isReady();

  EXPECT_FALSE(isRegistered());
}

TEST_F(TheRegistry, LeavesTheRequestInProgressAlone) {
  app.registersFor("play");
  assistant.asksForAction("play", 1);

  norix_unset_action_execution_cb("play");

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("result", 1)}));
}

TEST_F(TheRegistry, TakesAnActionIdOfGetAppContextThatIsNeverAskedFor) {
  norix_set_action_execution_cb("getAppContext", noteCall, &one);

  assistant.asksForState(1);

  EXPECT_THAT(called, IsEmpty());
}

struct Id {
  const char *name;
  std::string value;
};

void PrintTo(const Id &row, std::ostream *out) {
  *out << row.name;
}

class AnActionId : public TheRegistry, public testing::WithParamInterface<Id> {};

TEST_P(AnActionId, MayBeAnyText) {
  const std::string actionId = GetParam().value;

  EXPECT_EQ(norix_set_action_execution_cb(actionId.c_str(), noteCall, &one), NORIX_ERROR_NONE);
  EXPECT_THAT(logLines(), LinesAre({isSet(actionId)}));
  assistant.asksForAction(actionId, 1);
  EXPECT_EQ(norix_unset_action_execution_cb(actionId.c_str()), NORIX_ERROR_NONE);

  EXPECT_THAT(called, ElementsAre(1));
  EXPECT_THAT(logLines().back(), isUnset(actionId));
}

INSTANTIATE_TEST_SUITE_P(, AnActionId,
                         testing::Values(Id{"ThatIsEmpty", ""}, Id{"WithQuotes", "it's"},
                                         Id{"WithPercentSigns", "%s%n"},
                                         Id{"ThatIsNoUtf8", "\xff\xfe"},
                                         Id{"OfAMebibyte", std::string(1 << 20, 'a')}),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(TheRegistry, LetsACallbackTakeItselfAway) {
  app.registersFor("play");
  app.onAction = [this](const auto &) {
    norix_unset_action_execution_cb("play");
    EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  };

  assistant.asksForAction("play", 1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("result", 1)}));
}

TEST_F(TheRegistry, LetsACallbackReplaceItself) {
  app.registersFor("play");
  app.onAction = [this](const auto &) { norix_set_action_execution_cb("play", noteCall, &one); };
  assistant.asksForAction("play", 1);

  assistant.asksForAction("play", 2);

  EXPECT_THAT(called, ElementsAre(1));
}

} // namespace
