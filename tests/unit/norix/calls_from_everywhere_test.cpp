// SPDX-License-Identifier: Apache-2.0
//
// Every exported function, called in every situation an application can be in: the exact result,
// and no crash.
#include "exported_calls.h"
#include "results.h"
#include "roads.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <functional>
#include <tuple>

namespace {

using fake::DeliberateLeak;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;

struct Caller {
  fake::App &app;
  fake::Assistant &assistant;
  // Calls the function under test with the handle.
  std::function<void(void *handle)> call;
};

struct Situation {
  const char *name;
  // Goes there and makes the call.
  std::function<void(Caller &)> enter;
  Results results;
  // Requests that waited for their callback leave their copy.
  bool leavesAParkedRequest = false;
};

int unknownNumber = 50;
void *const kUnknownHandle = &unknownNumber;

void beforeInitialisation(Caller &caller) {
  caller.call(kUnknownHandle);
}

void afterARefusedInitialisation(Caller &caller) {
  platform().application.metadata.clear();
  caller.app.initialises();
  caller.call(kUnknownHandle);
}

void insideAnInitialisation(Caller &caller) {
  platform().during["rpc_port_stub_listen"] = [&caller] { caller.call(kUnknownHandle); };
  caller.app.initialises();
}

void afterInitialisation(Caller &caller) {
  caller.app.initialises();
  caller.call(kUnknownHandle);
}

void betweenConnectAndRegistration(Caller &caller) {
  caller.app.initialises();
  caller.assistant.connects();
  caller.call(kUnknownHandle);
}

void afterTheAssistantLeft(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.disconnects();
  caller.call(kUnknownHandle);
}

void insideAStateCallback(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.app.onState = [&caller](const auto &request) { caller.call(request.handle); };
  caller.assistant.asksForState(1);
}

void insideAnActionCallback(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.app.onAction = [&caller](const auto &request) { caller.call(request.handle); };
  caller.assistant.asksForAction("play", 1);
}

void whileAStateRequestWaits(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForState(1);
  caller.call(caller.app.stateRequests.back().handle);
}

void whileAnActionWaits(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.call(caller.app.actionRequests.back().handle);
}

void whileARequestIsParked(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("late", 1);
  caller.call(kUnknownHandle);
}

void insideADeferredCallback(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("late", 1);
  caller.app.registersFor("late");
  caller.app.onAction = [&caller](const auto &request) { caller.call(request.handle); };
  platform().clock.advance(0.02);
}

void afterAParkedRequestWasGivenUp(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("late", 1);
  platform().clock.advance(0.12);
  caller.call(kUnknownHandle);
}

void afterAStateTimeout(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForState(1);
  platform().clock.advance(30);
  caller.call(caller.app.stateRequests.back().handle);
}

void afterAnActionTimeout(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  platform().clock.advance(30);
  caller.call(caller.app.actionRequests.back().handle);
}

void afterAnAnsweredState(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForState(1);
  caller.app.answersState("state");
  caller.call(caller.app.stateRequests.back().handle);
}

void afterAnAnsweredAction(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.app.answersAction("result");
  caller.call(caller.app.actionRequests.back().handle);
}

void withTheHandleOfAReplacedRequest(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.assistant.asksForState(2);
  caller.call(caller.app.actionRequests.back().handle);
}

void withANullHandle(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.call(nullptr);
}

void afterDeinitialisation(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.app.deinitialises();
  caller.call(caller.app.actionRequests.back().handle);
}

void afterAnotherInitialisation(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("play", 1);
  caller.app.deinitialises();
  caller.app.initialises();
  caller.call(caller.app.actionRequests.back().handle);
}

void insideAStateCallbackThatDeinitialised(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.app.onState = [&caller](const auto &request) {
    caller.app.deinitialises();
    caller.call(request.handle);
  };
  caller.assistant.asksForState(1);
}

void insideAnActionCallbackThatDeinitialised(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.app.onAction = [&caller](const auto &request) {
    caller.app.deinitialises();
    caller.call(request.handle);
  };
  caller.assistant.asksForAction("play", 1);
}

void insideADeferredCallbackThatDeinitialised(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.assistant.asksForAction("late", 1);
  caller.app.registersFor("late");
  caller.app.onAction = [&caller](const auto &request) {
    caller.app.deinitialises();
    caller.call(request.handle);
  };
  platform().clock.advance(0.02);
}

void insideACallbackThatReinitialised(Caller &caller) {
  isReady(caller.app, caller.assistant);
  caller.app.onAction = [&caller](const auto &request) {
    caller.app.deinitialises();
    caller.app.initialises();
    caller.call(request.handle);
  };
  caller.assistant.asksForAction("play", 1);
}

constexpr Results afterRefusal() {
  Results results = kNotInitialised;
  results[0] = kUnsupported;
  return results;
}

constexpr Results afterAnsweredState() {
  Results results = kStateWaits;
  results[4] = kFailed;
  return results;
}

constexpr Results withNull() {
  Results results = kActionWaits;
  results[4] = kInvalid;
  results[7] = kInvalid;
  results[8] = kInvalid;
  return results;
}

const std::vector<Situation> kSituations = {
    {"BeforeInitialisation", beforeInitialisation, kNotInitialised},
    {"AfterARefusedInitialisation", afterARefusedInitialisation, afterRefusal()},
    {"InsideAnInitialisation", insideAnInitialisation, kNotInitialised},
    {"AfterInitialisation", afterInitialisation, kIdle},
    {"BetweenConnectAndRegistration", betweenConnectAndRegistration, kIdle},
    {"AfterTheAssistantLeft", afterTheAssistantLeft, kIdle},
    {"InsideAStateCallback", insideAStateCallback, kStateWaits},
    {"InsideAnActionCallback", insideAnActionCallback, kActionWaits},
    {"WhileAStateRequestWaits", whileAStateRequestWaits, kStateWaits},
    {"WhileAnActionWaits", whileAnActionWaits, kActionWaits},
    {"WhileARequestIsParked", whileARequestIsParked, kIdle, true},
    {"InsideADeferredCallback", insideADeferredCallback, kIdle, true},
    {"AfterAParkedRequestWasGivenUp", afterAParkedRequestWasGivenUp, kIdle, true},
    {"AfterAStateTimeout", afterAStateTimeout, kIdle},
    {"AfterAnActionTimeout", afterAnActionTimeout, kIdle},
    {"AfterAnAnsweredState", afterAnAnsweredState, afterAnsweredState()},
    {"AfterAnAnsweredAction", afterAnAnsweredAction, kIdle},
    {"WithTheHandleOfAReplacedRequest", withTheHandleOfAReplacedRequest, kIdle},
    {"WithANullHandle", withANullHandle, withNull()},
    {"AfterDeinitialisation", afterDeinitialisation, kNotInitialised},
    {"AfterAnotherInitialisation", afterAnotherInitialisation, kIdle},
    {"InsideAStateCallbackThatDeinitialised", insideAStateCallbackThatDeinitialised,
     kNotInitialised},
    {"InsideAnActionCallbackThatDeinitialised", insideAnActionCallbackThatDeinitialised,
     kNotInitialised},
    {"InsideADeferredCallbackThatDeinitialised", insideADeferredCallbackThatDeinitialised,
     kNotInitialised, true},
    {"InsideACallbackThatReinitialised", insideACallbackThatReinitialised, kIdle},
};

class ACallFromEverywhere : public fake::LibraryTest,
                            public testing::WithParamInterface<std::tuple<size_t, size_t>> {
protected:
  // Every wait ends, so that what is left is not the timer of one. A state request's end that
  // reaches nobody any more leaves its response.
  void endEveryWait() {
    const size_t waits = platform().clock.alive().size();
    const size_t responses = assistant.callbacks().size();
    platform().clock.advance(kLong);
    if (waits != 0 && assistant.callbacks().size() == responses) {
      expectLeft(DeliberateLeak::UndeliveredResponse);
    }
  }
};

TEST_P(ACallFromEverywhere, HasItsResult) {
  const Situation &situation = kSituations[std::get<0>(GetParam())];
  const size_t function = std::get<1>(GetParam());
  std::vector<int> results;
  Caller caller{app, assistant, [&results, function](void *handle) {
                  results.push_back(exportedCalls()[function].call(handle));
                }};

  situation.enter(caller);
  endEveryWait();

  EXPECT_THAT(results, testing::ElementsAre(situation.results.at(function)));
  // An initialisation inside another makes a second stub and leaks the first.
  if (platform().ports.stubsAlive() > 1) {
    expectLeft(DeliberateLeak::StubOfFailedInitialise);
  }
  if (situation.leavesAParkedRequest) {
    expectLeft(DeliberateLeak::ParkedBundle);
  }
}

INSTANTIATE_TEST_SUITE_P(, ACallFromEverywhere,
                         testing::Combine(testing::Range<size_t>(0, kSituations.size()),
                                          testing::Range<size_t>(0, 9)),
                         [](const auto &tested) {
                           return std::string(kSituations[std::get<0>(tested.param)].name) + "_"
                                  + exportedCalls()[std::get<1>(tested.param)].function;
                         });

// Deinitialising from inside takes away what the library is standing on.
class DeinitialisingInside : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
  }
};

TEST_F(DeinitialisingInside, AnActionCallbackEndsTheRequest) {
  app.onAction = [this](const auto &) { app.deinitialises(); };

  EXPECT_EQ(assistant.asksForAction("play", 1), 0);
  platform().clock.advance(kLong);

  EXPECT_EQ(platform().ports.stubsAlive(), 0U);
  EXPECT_THAT(assistant.callbacks(), testing::IsEmpty());
}

TEST_F(DeinitialisingInside, AStateCallbackLeavesTheWaitToItsEnd) {
  app.onState = [this](const auto &) { app.deinitialises(); };

  EXPECT_EQ(assistant.asksForState(1), 0);
  forgetCalls();
  platform().clock.advance(30);

  EXPECT_THAT(log(),
              TextsAre({"App state request execution timed out. Failed to execute action.",
                        "App Id org.example.music", "response error: InvalidCallbackException"}));
  EXPECT_THAT(assistant.callbacks(), testing::IsEmpty());
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(DeinitialisingInside, ACallbackAllowsToStartAgain) {
  app.onAction = [this](const auto &) {
    app.onAction = nullptr;
    app.deinitialises();
    app.initialises();
    app.registersFor("play");
  };
  assistant.asksForAction("play", 1);

  assistant.isReady();
  assistant.asksForAction("play", 2);
  app.answersAction("again");

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("again", 2)}));
}

TEST_F(DeinitialisingInside, ACallbackOfARequestThatArrivedInsideAnother) {
  app.onState = [this](const auto &) { app.deinitialises(); };
  app.onAction = [this](const auto &) { EXPECT_EQ(assistant.asksForState(2), 0); };

  EXPECT_EQ(assistant.asksForAction("play", 1), 0);

  EXPECT_EQ(platform().ports.stubsAlive(), 0U);
  expectLeft(DeliberateLeak::StateTimer);
}

class ARequestInsideACallback : public DeinitialisingInside {};

TEST_F(ARequestInsideACallback, ReplacesTheOneInWhoseCallbackItArrived) {
  app.onAction = [this](const auto &) { assistant.asksForState(2); };

  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.answersAction("late"), NORIX_ERROR_NONE);
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("state", 2)}));
}

// The connection's service lives until the request has been dealt with.
TEST_F(ARequestInsideACallback, IsAnsweredAfterItsAssistantDisconnected) {
  app.onAction = [this](const auto &) {
    assistant.disconnects();
    EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  };

  EXPECT_EQ(assistant.asksForAction("play", 1), 0);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("result", 1)}));
}

} // namespace
