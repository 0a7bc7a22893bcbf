// SPDX-License-Identifier: Apache-2.0
//
// Every exported function, called in the middle of an initialisation and of a deinitialisation: at
// each event at which the platform runs. There the library is half there.
#include "exported_calls.h"
#include "results.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <ostream>
#include <tuple>

namespace {

using fake::DeliberateLeak;
using fake::platform;
using fake::ResponsesAre;

enum Function { kInitialize, kDeinitialize };

struct Moment {
  const char *name;
  // The platform's call inside which the function is called.
  std::string event;
  Results results;
  // Whether an initialisation inside makes a second stub, so that one is leaked.
  bool leavesAStub = false;
};

void PrintTo(const Moment &moment, std::ostream *out) {
  *out << moment.name;
}

class ACallInside : public fake::LibraryTest,
                    public testing::WithParamInterface<std::tuple<Moment, size_t>> {
protected:
  static const Moment &moment() { return std::get<0>(GetParam()); }
  static size_t function() { return std::get<1>(GetParam()); }

  void callsAtTheMoment(void *handle) {
    inside(moment().event,
           [this, handle] { results.push_back(exportedCalls()[function()].call(handle)); });
  }
  void TearDown() override {
    EXPECT_THAT(results, testing::ElementsAre(moment().results.at(function())));
    if (moment().leavesAStub && function() == kInitialize) {
      expectLeft(DeliberateLeak::StubOfFailedInitialise);
    }
    LibraryTest::TearDown();
  }

  std::vector<int> results;
};

std::string nameOf(const testing::TestParamInfo<std::tuple<Moment, size_t>> &tested) {
  return std::string(std::get<0>(tested.param).name) + "_"
         + exportedCalls()[std::get<1>(tested.param)].function;
}

class ACallInsideAnInitialisation : public ACallInside {};

TEST_P(ACallInsideAnInitialisation, HasItsResult) {
  int unknown = 50;
  callsAtTheMoment(&unknown);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

// Whatever was called: the library can be brought into a known state and used.
TEST_P(ACallInsideAnInitialisation, LeavesAUsableLibrary) {
  int unknown = 50;
  callsAtTheMoment(&unknown);
  app.initialises();

  app.deinitialises();
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
  app.registersForState();
  assistant.isReady();
  assistant.asksForState(1);

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("state", 1)}));
}

INSTANTIATE_TEST_SUITE_P(
    , ACallInsideAnInitialisation,
    testing::Combine(
        testing::Values(
            Moment{"WhenTheStubIsCreated", "rpc_port_stub_create(message)", kNotInitialised, true},
            Moment{"WhenConnectionsAreHandled", "rpc_port_stub_add_connected_event_cb(stub 1)",
                   kNotInitialised, true},
            Moment{"WhenDisconnectionsAreHandled",
                   "rpc_port_stub_add_disconnected_event_cb(stub 1)", kNotInitialised, true},
            Moment{"WhenParcelsAreHandled", "rpc_port_stub_add_received_event_cb(stub 1)",
                   kNotInitialised, true},
            Moment{"WhenItListens", "rpc_port_stub_listen(stub 1)", kNotInitialised, true},
            Moment{"AtItsEnd", "dlog_print(App SDK NorixImpl is initialized)", kIdle}),
        testing::Range<size_t>(0, 9)),
    nameOf);

// With a connection, and an action that waits for its answer.
class ACallInsideADeinitialisation : public ACallInside {
protected:
  void SetUp() override {
    app.initialises();
    app.registersForState();
    app.registersFor("play");
    assistant.isReady();
    assistant.asksForAction("play", 1); // timer 1
    forgetCalls();
    callsAtTheMoment(app.actionRequests.back().handle);
  }
};

TEST_P(ACallInsideADeinitialisation, HasItsResult) {
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(platform().clock.alive(), testing::IsEmpty());
}

TEST_P(ACallInsideADeinitialisation, LeavesAUsableLibrary) {
  app.deinitialises();

  app.deinitialises();
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
  app.registersForState();
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.isReady();
  again.asksForState(2);

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  EXPECT_THAT(again.responses(), ResponsesAre({fake::stateAnswer("state", 2)}));
}

INSTANTIATE_TEST_SUITE_P(
    , ACallInsideADeinitialisation,
    testing::Combine(
        testing::Values(Moment{"WhenTheRetriesEnd", "ecore_timer_del(null)", kActionWaits},
                        Moment{"WhenTheWaitEnds", "ecore_timer_del(timer 1)", kActionWaits},
                        Moment{"WhenAConnectionEnds", "dlog_print(Call stub OnTerminate)",
                               kNotInitialised, true},
                        Moment{"WhenTheStubIsDestroyed", "rpc_port_stub_destroy(stub 1)",
                               kNotInitialised, true},
                        Moment{"AtItsEnd", "dlog_print(NorixImpl is deinitialized)",
                               kNotInitialised}),
        testing::Range<size_t>(0, 9)),
    nameOf);

// The platform may tell of connections that end with their stub.
class ADisconnectionInsideADeinitialisation : public fake::ReadyLibraryTest {};

TEST_F(ADisconnectionInsideADeinitialisation, EndsItsServiceAndNothingElse) {
  inside("rpc_port_stub_destroy(stub 1)", [this] { assistant.disconnects(); });

  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(log().back(), "NorixImpl is deinitialized");
  EXPECT_EQ(platform().ports.stubsAlive(), 0U);
}

// A request that arrives while the connections end is no request any more.
TEST_F(ADisconnectionInsideADeinitialisation, DropsARequestThatArrivesNevertheless) {
  app.registersFor("play");
  inside("rpc_port_stub_destroy(stub 1)",
         [this] { EXPECT_EQ(assistant.asksForAction("play", 1), 0); });

  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);
  platform().clock.advance(kLong);

  EXPECT_TRUE(app.actionRequests.empty());
  EXPECT_TRUE(assistant.callbacks().empty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

} // namespace
