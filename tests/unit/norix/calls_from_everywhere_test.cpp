// SPDX-License-Identifier: Apache-2.0
//
// Every exported function, called in every situation an application can be in: the exact result,
// and no crash.
#include "exported_calls.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <array>
#include <functional>
#include <tuple>

namespace {

using fake::DeliberateLeak;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;

constexpr int kDone = NORIX_ERROR_NONE;
constexpr int kInvalid = NORIX_ERROR_INVALID_PARAMETER;
constexpr int kFailed = NORIX_ERROR_OPERATION_FAILED;
constexpr int kUnsupported = NORIX_ERROR_NOT_SUPPORTED;

struct World {
  fake::App &app;
  fake::Assistant &assistant;
  // Calls the function under test with the handle.
  std::function<void(void *handle)> call;
};

struct Situation {
  const char *name;
  // Goes there and makes the call.
  std::function<void(World &)> enter;
  // In the order of the nine functions: initialise, deinitialise, set and unset the state callback,
  // complete a state request, set and unset an action's callback, complete an action, get its name.
  std::array<int, 9> results;
  // Requests that waited for their callback leave their copy.
  bool leavesAParkedRequest = false;
};

void isReady(World &world) {
  world.app.initialises();
  world.app.registersForState();
  world.app.registersFor("play");
  world.assistant.isReady();
}

int unknownNumber = 50;
void *const kUnknownHandle = &unknownNumber;

constexpr std::array<int, 9> kNotInitialised = {kDone,   kDone,   kFailed, kFailed, kFailed,
                                                kFailed, kFailed, kFailed, kInvalid};
constexpr std::array<int, 9> kIdle = {kDone, kDone, kDone, kDone,   kDone,
                                      kDone, kDone, kDone, kInvalid};
// A state request waits: answering it as an action comes too late, there is no such wait.
constexpr std::array<int, 9> kStateWaits = {kDone, kDone, kDone,   kDone, kDone,
                                            kDone, kDone, kFailed, kDone};
constexpr std::array<int, 9> kActionWaits = {kDone, kDone, kDone, kDone, kFailed,
                                             kDone, kDone, kDone, kDone};

void beforeInitialisation(World &world) {
  world.call(kUnknownHandle);
}

void afterARefusedInitialisation(World &world) {
  platform().application.metadata.clear();
  world.app.initialises();
  world.call(kUnknownHandle);
}

void insideAnInitialisation(World &world) {
  platform().during["rpc_port_stub_listen"] = [&world] { world.call(kUnknownHandle); };
  world.app.initialises();
}

void afterInitialisation(World &world) {
  world.app.initialises();
  world.call(kUnknownHandle);
}

void betweenConnectAndRegistration(World &world) {
  world.app.initialises();
  world.assistant.connects();
  world.call(kUnknownHandle);
}

void afterTheAssistantLeft(World &world) {
  isReady(world);
  world.assistant.disconnects();
  world.call(kUnknownHandle);
}

void insideAStateCallback(World &world) {
  isReady(world);
  world.app.onState = [&world](const auto &request) { world.call(request.handle); };
  world.assistant.asksForState(1);
}

void insideAnActionCallback(World &world) {
  isReady(world);
  world.app.onAction = [&world](const auto &request) { world.call(request.handle); };
  world.assistant.asksForAction("play", 1);
}

void whileAStateRequestWaits(World &world) {
  isReady(world);
  world.assistant.asksForState(1);
  world.call(world.app.stateRequests.back().handle);
}

void whileAnActionWaits(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.call(world.app.actionRequests.back().handle);
}

void whileARequestIsParked(World &world) {
  isReady(world);
  world.assistant.asksForAction("late", 1);
  world.call(kUnknownHandle);
}

void insideADeferredCallback(World &world) {
  isReady(world);
  world.assistant.asksForAction("late", 1);
  world.app.registersFor("late");
  world.app.onAction = [&world](const auto &request) { world.call(request.handle); };
  platform().clock.advance(0.02);
}

void afterAParkedRequestWasGivenUp(World &world) {
  isReady(world);
  world.assistant.asksForAction("late", 1);
  platform().clock.advance(0.12);
  world.call(kUnknownHandle);
}

void afterAStateTimeout(World &world) {
  isReady(world);
  world.assistant.asksForState(1);
  platform().clock.advance(30);
  world.call(world.app.stateRequests.back().handle);
}

void afterAnActionTimeout(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  platform().clock.advance(30);
  world.call(world.app.actionRequests.back().handle);
}

void afterAnAnsweredState(World &world) {
  isReady(world);
  world.assistant.asksForState(1);
  world.app.answersState("state");
  world.call(world.app.stateRequests.back().handle);
}

void afterAnAnsweredAction(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.app.answersAction("result");
  world.call(world.app.actionRequests.back().handle);
}

void withTheHandleOfAReplacedRequest(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.assistant.asksForState(2);
  world.call(world.app.actionRequests.back().handle);
}

void withANullHandle(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.call(nullptr);
}

void afterDeinitialisation(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.app.deinitialises();
  world.call(world.app.actionRequests.back().handle);
}

void afterAnotherInitialisation(World &world) {
  isReady(world);
  world.assistant.asksForAction("play", 1);
  world.app.deinitialises();
  world.app.initialises();
  world.call(world.app.actionRequests.back().handle);
}

void insideAStateCallbackThatDeinitialised(World &world) {
  isReady(world);
  world.app.onState = [&world](const auto &request) {
    world.app.deinitialises();
    world.call(request.handle);
  };
  world.assistant.asksForState(1);
}

void insideAnActionCallbackThatDeinitialised(World &world) {
  isReady(world);
  world.app.onAction = [&world](const auto &request) {
    world.app.deinitialises();
    world.call(request.handle);
  };
  world.assistant.asksForAction("play", 1);
}

void insideADeferredCallbackThatDeinitialised(World &world) {
  isReady(world);
  world.assistant.asksForAction("late", 1);
  world.app.registersFor("late");
  world.app.onAction = [&world](const auto &request) {
    world.app.deinitialises();
    world.call(request.handle);
  };
  platform().clock.advance(0.02);
}

void insideACallbackThatReinitialised(World &world) {
  isReady(world);
  world.app.onAction = [&world](const auto &request) {
    world.app.deinitialises();
    world.app.initialises();
    world.call(request.handle);
  };
  world.assistant.asksForAction("play", 1);
}

constexpr std::array<int, 9> afterRefusal() {
  std::array<int, 9> results = kNotInitialised;
  results[0] = kUnsupported;
  return results;
}

constexpr std::array<int, 9> afterAnsweredState() {
  std::array<int, 9> results = kStateWaits;
  results[4] = kFailed;
  return results;
}

constexpr std::array<int, 9> withNull() {
  std::array<int, 9> results = kActionWaits;
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
  World world{app, assistant, [&results, function](void *handle) {
                results.push_back(exportedCalls()[function].call(handle));
              }};

  situation.enter(world);
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
