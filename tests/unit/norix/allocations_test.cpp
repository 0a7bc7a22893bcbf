// SPDX-License-Identifier: Apache-2.0
//
// Each allocation of a road that throws when there is no memory: the exception reaches the caller
// of an exported function and of the stub's event handlers, and ends in a service's operations and
// in the timers. Nothing is left but what an interrupted delivery leaves on purpose, and the
// library goes on working.
#include "roads.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"

#include <norix.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <ostream>

namespace {

using fake::App;
using fake::Assistant;
using fake::DeliberateLeak;
using fake::Heap;
using fake::platform;

// Longer than any string's own buffer: every copy of these allocates.
constexpr const char *kAction = "an action id that is rather long";
constexpr const char *kLate = "an action id that is registered late";
constexpr const char *kShort = "ab"; // Delivered late, its handle is noted.
constexpr const char *kAnswer = "an answer that is rather long as well";
constexpr const char *kStopped = "stopped an exception: std::bad_alloc";

std::vector<DeliberateLeak> noLeaks() {
  return {};
}

struct TightRoad {
  const char *name;
  // Up to the road's beginning; nothing fails there.
  std::function<void(App &, Assistant &)> prepare;
  std::function<void(App &, Assistant &)> run;
  // What is left when it was interrupted, as far as the journal says that it had come.
  std::function<std::vector<DeliberateLeak>()> leaks = noLeaks;
  // Whether no exception leaves it, wherever it is interrupted.
  bool stops = false;
};

void PrintTo(const TightRoad &road, std::ostream *out) {
  *out << road.name;
}

void hasADelegate(App &app, Assistant &assistant) {
  isConnected(app, assistant);
  assistant.registers();
}

void isReadyForActions(App &app, Assistant &assistant) {
  isReadyFor(kAction, app, assistant);
}

void stateWaits(App &app, Assistant &assistant) {
  isReadyForActions(app, assistant);
  assistant.asksForState(1);
}

void actionWaits(App &app, Assistant &assistant) {
  isReadyForActions(app, assistant);
  assistant.asksForAction(kAction, 1);
}

void requestIsParked(App &app, Assistant &assistant) {
  isReadyForActions(app, assistant);
  assistant.asksForAction(kLate, 1);
}

bool wasCalled(const char *function) {
  return platform().journal.count(function) != 0;
}

std::vector<DeliberateLeak> afterAnInitialisation() {
  // The factory was not made: the stub's object has none.
  return wasCalled("rpc_port_stub_create")
             ? std::vector<DeliberateLeak>{DeliberateLeak::StubWithoutFactory}
             : std::vector<DeliberateLeak>{};
}

// The delivery of an action's response keeps the application's id when it is interrupted.
std::vector<DeliberateLeak> afterAnActionsResponse() {
  return wasCalled("app_get_id")
             ? std::vector<DeliberateLeak>{DeliberateLeak::AppIdOfFailedDelivery}
             : std::vector<DeliberateLeak>{};
}

std::vector<DeliberateLeak> afterALateDelivery() {
  return {DeliberateLeak::ParkedBundle};
}

std::vector<DeliberateLeak> afterGivingUp() {
  std::vector<DeliberateLeak> left = afterAnActionsResponse();
  left.push_back(DeliberateLeak::ParkedBundle);
  return left;
}

const std::vector<TightRoad> kTightRoads = {
    {"OfAnInitialisation", nothing, [](App &app, Assistant &) { app.initialises(); },
     afterAnInitialisation},
    {"OfAConnection", isInitialised, [](App &, Assistant &assistant) { assistant.connects(); }},
    {"OfARegistrationOfTheAssistant", isConnected,
     [](App &, Assistant &assistant) { assistant.registers(); }},
    {"OfASecondRegistrationOfTheAssistant", hasADelegate,
     [](App &, Assistant &assistant) { assistant.registers(); }},
    {"OfAnUnregistrationOfTheAssistant", isReadyForActions,
     [](App &, Assistant &assistant) { assistant.unregisters(); }, noLeaks, true},
    {"OfARegistrationForActions", isInitialised,
     [](App &app, Assistant &) { app.registersFor(kAction); }},
    {"OfASecondRegistrationForActions", isReadyForActions,
     [](App &app, Assistant &) { app.registersFor(kAction); }},
    {"OfAnUnregistrationForActions", isReadyForActions,
     [](App &, Assistant &) { (void)norix_unset_action_execution_cb(kAction); }},
    {"OfAStateRequest", isReadyForActions,
     [](App &, Assistant &assistant) { assistant.asksForState(1); }, noLeaks, true},
    {"OfAStateRequestWithoutACallback", hasADelegate,
     [](App &, Assistant &assistant) { assistant.asksForState(1); }, noLeaks, true},
    {"OfAnActionRequest", isReadyForActions,
     [](App &, Assistant &assistant) { assistant.asksForAction(kAction, 1); }, noLeaks, true},
    {"OfAnEarlyRequest", isReadyForActions,
     [](App &, Assistant &assistant) { assistant.asksForAction(kLate, 1); }, noLeaks, true},
    {"OfALateDelivery",
     [](App &app, Assistant &assistant) {
       isReadyForActions(app, assistant);
       assistant.asksForAction(kShort, 1);
       app.registersFor(kShort);
     },
     [](App &, Assistant &) { platform().clock.advance(0.02); }, afterALateDelivery, true},
    {"OfGivingUp",
     [](App &app, Assistant &assistant) {
       requestIsParked(app, assistant);
       platform().clock.advance(0.1);
     },
     [](App &, Assistant &) { platform().clock.advance(0.02); }, afterGivingUp, true},
    {"OfAStateAnswer", stateWaits, [](App &app, Assistant &) { app.answersState(kAnswer); }},
    {"OfAnActionResult", actionWaits, [](App &app, Assistant &) { app.answersAction(kAnswer); },
     afterAnActionsResponse},
    {"OfAStateTimeout", stateWaits, [](App &, Assistant &) { platform().clock.advance(30); },
     noLeaks, true},
    {"OfAnActionTimeout", actionWaits, [](App &, Assistant &) { platform().clock.advance(30); },
     afterAnActionsResponse, true},
    {"OfAnActionName", actionWaits,
     [](App &app, Assistant &) {
       char *name = nullptr;
       (void)norix_get_action_name(app.actionRequests.back().handle, &name);
       std::free(name);
     }},
};

// Whether the library serves an assistant that comes now, from its connection to its answer.
void servesAnotherAssistant(App &app) {
  Assistant another("org.example.another", "instance-9");
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
  app.registersForState();
  another.isReady();
  another.asksForState(99);
  EXPECT_EQ(app.answersState("still here"), NORIX_ERROR_NONE);
  EXPECT_THAT(another.responses(), fake::ResponsesAre({fake::stateAnswer("still here", 99)}));
}

bool throwsBadAlloc(const std::function<void()> &action) {
  try {
    action();
  } catch (const std::bad_alloc &) {
    return true;
  }
  return false;
}

// Runs the road with its nth allocation failing. Whether it had as many.
bool isInterrupted(const TightRoad &road, int nth) {
  fake::startAnew();
  // An id of some length, whose copies allocate.
  platform().application.id = "org.example.an.application.with.a.long.id";
  App app;
  Assistant assistant;
  road.prepare(app, assistant);
  platform().journal.clear();

  Heap::instance().failNew(nth);
  const bool thrown = throwsBadAlloc([&] { road.run(app, assistant); });
  const std::vector<std::string> log = platform().log.texts();
  const bool stopped = std::count(log.begin(), log.end(), kStopped) != 0;
  const bool interrupted = thrown || stopped;
  Heap::instance().failNew(0);
  EXPECT_FALSE(thrown && stopped);
  EXPECT_FALSE(thrown && road.stops);

  if (interrupted) {
    for (const DeliberateLeak leak : road.leaks()) {
      platform().leaks.expectLeft(leak, 1);
    }
    servesAnotherAssistant(app);
    // Timers that were interrupted are still there, and have nothing to do.
    platform().clock.advance(3600);
    EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);
    fake::reportWhatIsLeft();
  }
  return interrupted;
}

class AFailedAllocation : public fake::LibraryTest,
                          public testing::WithParamInterface<TightRoad> {};

TEST_P(AFailedAllocation, ReachesTheCallerOrEndsAndLeavesTheLibraryWorking) {
  int nth = 1;
  while (isInterrupted(GetParam(), nth)) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    ++nth;
  }
  EXPECT_GT(nth, 1) << "the road does not allocate";
  fake::startAnew();
}

INSTANTIATE_TEST_SUITE_P(, AFailedAllocation, testing::ValuesIn(kTightRoads),
                         [](const auto &tested) { return std::string(tested.param.name); });

// Taking something away, and registering for states, needs no memory that could be missing.
class WithoutMemory : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor(kAction);
    assistant.asksForAction(kAction, 1);
    Heap::instance().failNew(1);
  }
  void TearDown() override {
    // Still to come: nothing has asked for memory.
    EXPECT_TRUE(Heap::instance().nextNewFails());
    ReadyLibraryTest::TearDown();
  }
};

TEST_F(WithoutMemory, TheStateCallbackIsTakenAwayAndSetAgain) {
  EXPECT_EQ(norix_unset_app_state_request_cb(), NORIX_ERROR_NONE);
  EXPECT_EQ(app.registersForState(), NORIX_ERROR_NONE);
}

TEST_F(WithoutMemory, TheLibraryIsDeinitialised) {
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(log().back(), "NorixImpl is deinitialized");
}

} // namespace
