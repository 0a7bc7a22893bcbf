// SPDX-License-Identifier: Apache-2.0
//
// What the library keeps, what it forgets, which of two values it uses, and what it asks for each
// time: one small scene per row.
#include "NorixImpl/NorixCommonData.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <utility>

namespace {

using fake::App;
using fake::Assistant;
using fake::DeliberateLeak;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using norix::NorixCommonData;
using testing::IsEmpty;

struct Row {
  const char *name;
  // Initialised, with callbacks for the state and for "play", and a connected assistant with a
  // delegate.
  std::function<void(App &, Assistant &)> scene;
};

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.name;
}

class Scenes : public fake::ReadyLibraryTest, public testing::WithParamInterface<Row> {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    forgetCalls();
  }
};

NorixCommonData &common() {
  return *NorixCommonData::_instance;
}

void allowListIsIn(const std::string &folder) {
  static std::string path;
  path = folder;
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = path.c_str();
}

bool wasLogged(const std::string &text) {
  const std::vector<std::string> log = platform().log.texts();
  return std::count(log.begin(), log.end(), text) != 0;
}

void expectAnswersState(App &app, Assistant &assistant, uint64_t requestId) {
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  ASSERT_FALSE(assistant.responses().empty());
  EXPECT_EQ(assistant.responses().back(), fake::stateAnswer("state", requestId));
}

// --- What must stay ---

void requestThroughASecondInitialisation(App &app, Assistant &assistant) {
  assistant.asksForState(7);
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
  expectAnswersState(app, assistant, 7);
  assistant.asksForState(8);
  EXPECT_EQ(app.stateRequests.back().number, 3);
}

void delegateThroughARefusedSetCb(App &app, Assistant &assistant) {
  Assistant refused(fake::kAssistantId, "instance-2");
  refused.connects();
  const std::string folder = testing::TempDir() + "norix-refusing/";
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "allow_list.dat") << "org.example.other\n";
  assistant.asksForState(7);
  allowListIsIn(folder);
  refused.registers();
  EXPECT_EQ(refused.results().back(), fake::resultOf(-1));
  refused.unregisters();
  std::filesystem::remove_all(folder);
  expectAnswersState(app, assistant, 7);
}

void delegatesOfOthersThroughUnsetCb(App &app, Assistant &assistant) {
  Assistant other("org.example.other", "instance-2");
  other.isReady();
  assistant.asksForState(7);
  EXPECT_EQ(other.unregisters(), 0);
  expectAnswersState(app, assistant, 7);
}

void delegateThroughTheEndOfAnotherConnection(App &app, Assistant &assistant) {
  Assistant again(fake::kAssistantId, "instance-2");
  again.connects();
  assistant.asksForState(7);
  again.disconnects();
  expectAnswersState(app, assistant, 7);
}

void otherActionsThroughAnUnset(App & /*app*/, Assistant &assistant) {
  static int calls = 0;
  const auto count = [](void *, bundle *, void *) { ++calls; };
  calls = 0;
  for (const char *actionId : {"p", "pl", "player", "PLAY", "play "}) {
    norix_set_action_execution_cb(actionId, count, nullptr);
  }
  norix_unset_action_execution_cb("play");
  for (const char *actionId : {"p", "pl", "player", "PLAY", "play "}) {
    assistant.asksForAction(actionId, 7);
  }
  EXPECT_EQ(calls, 5);
}

void actionsThroughAnUnsetOfTheState(App &app, Assistant &assistant) {
  norix_unset_app_state_request_cb();
  assistant.asksForAction("play", 7);
  EXPECT_EQ(app.actionRequests.size(), 1U);
}

void entriesOfOtherNumbersThroughARequest(App & /*app*/, Assistant &assistant) {
  common()._actionHandlerMap[50] = {"other", 1};
  assistant.asksForAction("play", 7);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 1U);
}

void entriesOfOtherNumbersThroughATimeout(App & /*app*/, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._actionHandlerMap[50] = {"other", 1};
  platform().clock.advance(30);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 1U);
  EXPECT_EQ(common()._actionHandlerMap.count(2), 0U);
}

void entryOfAStateThroughItsAnswer(App &app, Assistant &assistant) {
  assistant.asksForState(7);
  common()._actionHandlerMap[50] = {"other", 1};
  app.answersState("state");
  EXPECT_EQ(common()._actionHandlerMap.size(), 2U);
}

void clientThroughDeinitialisation(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  app.deinitialises();
  EXPECT_EQ(common()._norixClientAppId, fake::kAssistantId);
}

void connectionsThroughTheEndOfAnother(App &app, Assistant &assistant) {
  Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();
  assistant.disconnects();
  again.asksForState(7);
  expectAnswersState(app, again, 7);
}

INSTANTIATE_TEST_SUITE_P(
    Keep, Scenes,
    testing::Values(
        Row{"TheRequestThroughASecondInitialisation", requestThroughASecondInitialisation},
        Row{"TheDelegateThroughARefusedSetCb", delegateThroughARefusedSetCb},
        Row{"TheDelegatesOfOthersThroughUnsetCb", delegatesOfOthersThroughUnsetCb},
        Row{"TheDelegateThroughTheEndOfAnotherConnection",
            delegateThroughTheEndOfAnotherConnection},
        Row{"TheOtherActionsThroughAnUnset", otherActionsThroughAnUnset},
        Row{"TheActionsThroughAnUnsetOfTheState", actionsThroughAnUnsetOfTheState},
        Row{"TheEntriesOfOtherNumbersThroughARequest", entriesOfOtherNumbersThroughARequest},
        Row{"TheEntriesOfOtherNumbersThroughATimeout", entriesOfOtherNumbersThroughATimeout},
        Row{"TheEntryOfAStateThroughItsAnswer", entryOfAStateThroughItsAnswer},
        Row{"TheClientThroughDeinitialisation", clientThroughDeinitialisation},
        Row{"TheConnectionsThroughTheEndOfAnother", connectionsThroughTheEndOfAnother}),
    testing::PrintToStringParamName());

// --- What must be forgotten ---

void handleOfTheRequestBefore(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  void *const handle = app.actionRequests.back().handle;
  char *actionId = nullptr;
  assistant.asksForAction("unknown", 8); // Draws no number.
  EXPECT_EQ(norix_get_action_name(handle, &actionId), NORIX_ERROR_INVALID_PARAMETER);
  assistant.asksForState(9); // Ends the wait of the second.
}

void idOfTheRequestBefore(App &app, Assistant &assistant) {
  assistant.asksForState(7);
  assistant.sends({fake::text("actionId", "getAppContext")});
  expectAnswersState(app, assistant, 0);
}

void clientOfTheRequestBefore(App &app, Assistant &assistant) {
  Assistant other("org.example.other", "instance-2");
  other.isReady();
  assistant.asksForState(7);
  other.asksForAction("play", 8);
  app.answersAction("result");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(other.responses(), ResponsesAre({fake::actionAnswer("result", 8)}));
}

void clientOfTheRequestBeforeAParkedOne(App & /*app*/, Assistant &assistant) {
  Assistant other("org.example.other", "instance-2");
  other.isReady();
  assistant.asksForState(7);
  other.asksForAction("late", 8);
  platform().clock.advance(0.12);
  platform().leaks.expectLeft(DeliberateLeak::ParkedBundle, 1);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_EQ(other.callbacks().size(), 1U);
}

void waitOfTheOtherKind(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  assistant.asksForState(8);
  EXPECT_EQ(platform().clock.alive().size(), 1U);
  app.answersState("state");
  platform().clock.advance(100);
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

void delegatesAtDeinitialisation(App &app, Assistant &assistant) {
  app.deinitialises();
  app.initialises();
  app.registersForState();
  Assistant again(fake::kAssistantId, "instance-2");
  again.connects();
  again.asksForState(7);
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  platform().leaks.expectLeft(DeliberateLeak::UndeliveredResponse, 1);
}

void callbacksAtDeinitialisation(App &app, Assistant & /*assistant*/) {
  app.deinitialises();
  app.initialises();
  Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();
  again.asksForAction("play", 7);
  again.asksForState(8);
  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_THAT(app.stateRequests, IsEmpty());
}

void numbersAtDeinitialisation(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  assistant.asksForAction("play", 8);
  app.deinitialises();
  EXPECT_EQ(common()._requestId, ~0ULL);
  EXPECT_EQ(common()._actionHandlerIndex, 0);
  app.initialises();
  EXPECT_EQ(common()._requestId, ~0ULL);
  EXPECT_EQ(common()._actionHandlerIndex, 1);
}

void entryOfAnAnsweredAction(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  app.answersAction("result");
  EXPECT_THAT(common()._actionHandlerMap, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Forget, Scenes,
    testing::Values(Row{"TheHandleOfTheRequestBefore", handleOfTheRequestBefore},
                    Row{"TheIdOfTheRequestBefore", idOfTheRequestBefore},
                    Row{"TheClientOfTheRequestBefore", clientOfTheRequestBefore},
                    Row{"TheClientOfTheRequestBeforeAParkedOne",
                        clientOfTheRequestBeforeAParkedOne},
                    Row{"TheWaitOfTheOtherKind", waitOfTheOtherKind},
                    Row{"TheDelegatesAtDeinitialisation", delegatesAtDeinitialisation},
                    Row{"TheCallbacksAtDeinitialisation", callbacksAtDeinitialisation},
                    Row{"TheNumbersAtDeinitialisation", numbersAtDeinitialisation},
                    Row{"TheEntryOfAnAnsweredAction", entryOfAnAnsweredAction}),
    testing::PrintToStringParamName());

// --- Which of two values ---

// The number of the request that is answered, and the one drawn last, differ here.
void anAnswerErasesItsOwnNumber(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._actionHandlerMap[50] = {"other", 7};
  common()._actionHandlerIndex = 50;
  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  EXPECT_EQ(common()._actionHandlerMap.count(2), 0U);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 1U);
}

void aDiscardErasesItsOwnNumber(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._actionHandlerMap[50] = {"other", 7};
  common()._actionHandlerIndex = 50;
  common()._requestId = 8;
  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  EXPECT_EQ(common()._actionHandlerMap.count(2), 0U);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 1U);
}

void aTimeoutErasesTheCurrentNumber(App & /*app*/, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._actionHandlerMap[50] = {"other", 7};
  common()._actionHandlerIndex = 50;
  platform().clock.advance(30);
  EXPECT_EQ(common()._actionHandlerMap.count(2), 1U);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 0U);
}

void aStateTimeoutErasesTheCurrentNumber(App & /*app*/, Assistant &assistant) {
  assistant.asksForState(7);
  common()._actionHandlerMap[50] = {"other", 7};
  common()._actionHandlerIndex = 50;
  platform().clock.advance(30);
  EXPECT_EQ(common()._actionHandlerMap.count(2), 1U);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 0U);
}

void aRequestErasesTheCurrentNumber(App & /*app*/, Assistant &assistant) {
  common()._actionHandlerIndex = 50;
  common()._actionHandlerMap[50] = {"other", 1};
  common()._actionHandlerMap[49] = {"other", 1};
  common()._actionHandlerMap[52] = {"other", 1};
  assistant.asksForState(7);
  EXPECT_EQ(common()._actionHandlerMap.count(50), 0U);
  EXPECT_EQ(common()._actionHandlerMap.count(49), 1U);
  EXPECT_EQ(common()._actionHandlerMap.count(52), 1U);
  EXPECT_EQ(common()._actionHandlerMap.at(51).first, "getAppContext");
}

// The entry is made with the id of the request, and the wait counts under the id in progress.
void aTimeoutCarriesTheIdInProgress(App & /*app*/, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._requestId = 8;
  platform().clock.advance(30);
  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionFailure("Action execution request timed out", 8)}));
}

void aDiscardIsLoggedUnderTheIdOfTheEntry(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  common()._requestId = 8;
  app.answersAction("result");
  EXPECT_TRUE(wasLogged("Discarding response recieved for old requestId 7"));
}

void anUnknownHandleIsLoggedByItsOwnNumber(App & /*app*/, Assistant &assistant) {
  int handle = 61;
  assistant.asksForAction("play", 7);
  (void)norix_complete_action_execution(&handle, "result");
  EXPECT_TRUE(wasLogged("Couldn't find requestId corresponding to actionHandler 61"));
}

void aNameIsThatOfTheHandle(App & /*app*/, Assistant &assistant) {
  int handle = 50;
  char *actionId = nullptr;
  assistant.asksForAction("play", 7);
  common()._actionHandlerMap[50] = {"other", 1};
  EXPECT_EQ(norix_get_action_name(&handle, &actionId), NORIX_ERROR_NONE);
  EXPECT_STREQ(actionId, "other");
  free(actionId);
}

INSTANTIATE_TEST_SUITE_P(
    Choose, Scenes,
    testing::Values(
        Row{"AnAnswerErasesItsOwnNumber", anAnswerErasesItsOwnNumber},
        Row{"ADiscardErasesItsOwnNumber", aDiscardErasesItsOwnNumber},
        Row{"ATimeoutErasesTheCurrentNumber", aTimeoutErasesTheCurrentNumber},
        Row{"AStateTimeoutErasesTheCurrentNumber", aStateTimeoutErasesTheCurrentNumber},
        Row{"ARequestErasesTheCurrentNumber", aRequestErasesTheCurrentNumber},
        Row{"ATimeoutCarriesTheIdInProgress", aTimeoutCarriesTheIdInProgress},
        Row{"ADiscardIsLoggedUnderTheIdOfTheEntry", aDiscardIsLoggedUnderTheIdOfTheEntry},
        Row{"AnUnknownHandleIsLoggedByItsOwnNumber", anUnknownHandleIsLoggedByItsOwnNumber},
        Row{"ANameIsThatOfTheHandle", aNameIsThatOfTheHandle}),
    testing::PrintToStringParamName());

// --- What is asked for each time ---

void theApplicationsId(App &app, Assistant &assistant) {
  assistant.asksForState(7);
  app.answersState("one");
  platform().application.id = "org.example.renamed";
  assistant.asksForState(8);
  app.answersState("two");
  assistant.asksForAction("play", 9);
  app.answersAction("three");
  platform().application.id = "org.example.again";
  assistant.asksForAction("play", 10);
  app.answersAction("four");

  EXPECT_THAT(
      assistant.callbacks(),
      ParcelsAre({fake::callback({}, fake::kAppId, fake::stateAnswer("one", 7)),
                  fake::callback({}, "org.example.renamed", fake::stateAnswer("two", 8)),
                  fake::callback({}, "org.example.renamed", fake::actionAnswer("three", 9)),
                  fake::callback({}, "org.example.again", fake::actionAnswer("four", 10))}));
}

void thePlaceOfTheAllowList(App & /*app*/, Assistant &assistant) {
  for (const std::string folder : {"/nonexistent/one/", "/nonexistent/two/"}) {
    allowListIsIn(folder);
    assistant.registers();
    EXPECT_TRUE(wasLogged("res_path : " + folder + "allow_list.dat"));
  }
}

void theKeysOfAnAnswer(App &app, Assistant &assistant) {
  assistant.asksForState(7);
  app.answersState("one");
  const char *const key = std::exchange(KEY_APP_STATE, "another key");
  assistant.asksForState(8);
  app.answersState("two");
  KEY_APP_STATE = key;
  EXPECT_EQ(assistant.responses()[0][1].key, "appContext");
  EXPECT_EQ(assistant.responses()[1][1].key, "another key");
}

void theKeyOfTheActionId(App &app, Assistant &assistant) {
  assistant.asksForAction("play", 7);
  const char *const key = std::exchange(ACTION_ID, "another key");
  assistant.sends({fake::text("another key", "play")});
  ACTION_ID = key;
  EXPECT_EQ(app.actionRequests.size(), 2U);
}

void theCallbackOfALateRequest(App &app, Assistant &assistant) {
  assistant.asksForAction("late", 7);
  platform().clock.advance(0.02);
  app.registersFor("late");
  norix_unset_action_execution_cb("late");
  platform().clock.advance(0.02);
  EXPECT_THAT(app.actionRequests, IsEmpty());
  app.registersFor("late");
  platform().clock.advance(0.02);
  EXPECT_EQ(app.actionRequests.size(), 1U);
  platform().leaks.expectLeft(DeliberateLeak::ParkedBundle, 1);
}

INSTANTIATE_TEST_SUITE_P(AskEachTimeFor, Scenes,
                         testing::Values(Row{"TheApplicationsId", theApplicationsId},
                                         Row{"ThePlaceOfTheAllowList", thePlaceOfTheAllowList},
                                         Row{"TheKeysOfAnAnswer", theKeysOfAnAnswer},
                                         Row{"TheKeyOfTheActionId", theKeyOfTheActionId},
                                         Row{"TheCallbackOfALateRequest",
                                             theCallbackOfALateRequest}),
                         testing::PrintToStringParamName());

TEST_P(Scenes, AreAsTheirNamesSay) {
  GetParam().scene(app, assistant);

  (void)norix_deinitialize();
  if (!platform().clock.alive().empty()) { // A state request that is still in progress.
    expectLeft(DeliberateLeak::StateTimer);
  }
}

// An action id counts letter for letter, also when its callback comes late.
class ALateActionId : public fake::ReadyLibraryTest,
                      public testing::WithParamInterface<const char *> {};

TEST_P(ALateActionId, IsNotThatOfAnotherText) {
  app.registersFor("late");

  assistant.asksForAction(GetParam(), 7);
  platform().clock.advance(0.12);

  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_EQ(assistant.callbacks().size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_P(ALateActionId, IsItsOwnText) {
  assistant.asksForAction(GetParam(), 7);
  app.registersFor(GetParam());
  platform().clock.advance(0.02);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  expectLeft(DeliberateLeak::ParkedBundle);
}

INSTANTIATE_TEST_SUITE_P(, ALateActionId,
                         testing::Values("late ", " late", "late\n", "\tlate", "Late", "lat",
                                         "later", ""));

} // namespace
