// SPDX-License-Identifier: Apache-2.0
//
// Exceptions that the application throws out of its callbacks: none reaches the platform, whose
// frames they would have to pass through, and the library goes on as after a callback that
// returned.
#include "fakes/LibraryTest.h"

#include <norix.h>

#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>

namespace {

using fake::DeliberateLeak;
using fake::platform;
using fake::ResponsesAre;
using testing::Contains;

struct Thrown {
  const char *name;
  std::function<void()> throws;
  const char *log;
};

void PrintTo(const Thrown &row, std::ostream *out) {
  *out << row.name;
}

struct RoadToACallback {
  const char *name;
  // Until the callback is called; the result is that of the stub's received handler.
  std::function<int(fake::App &, fake::Assistant &)> run;
  fake::Contents timeout;
  bool leavesAParkedRequest = false;
};

void PrintTo(const RoadToACallback &row, std::ostream *out) {
  *out << row.name;
}

class AnExceptionOfACallback
    : public fake::ReadyLibraryTest,
      public testing::WithParamInterface<std::tuple<RoadToACallback, Thrown>> {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    app.onState = app.onAction = [](const auto &) { thrown().throws(); };
    if (road().leavesAParkedRequest) {
      expectLeft(DeliberateLeak::ParkedBundle);
    }
  }
  static const RoadToACallback &road() { return std::get<0>(GetParam()); }
  static const Thrown &thrown() { return std::get<1>(GetParam()); }
};

TEST_P(AnExceptionOfACallback, IsLoggedAndReachesNobody) {
  EXPECT_EQ(road().run(app, assistant), 0);

  EXPECT_EQ(log().back(), thrown().log);
  platform().clock.advance(30);
}

// The request counts as handed over: its wait goes on, and every other timer has ended.
TEST_P(AnExceptionOfACallback, LeavesTheRequestToItsTimeout) {
  road().run(app, assistant);
  ASSERT_EQ(platform().clock.alive().size(), 1U);
  EXPECT_EQ(platform().clock.alive().front().interval, 30.0);

  platform().clock.advance(kLong);

  EXPECT_THAT(assistant.responses(), ResponsesAre({road().timeout}));
  EXPECT_THAT(platform().clock.alive(), testing::IsEmpty());
}

TEST_P(AnExceptionOfACallback, LeavesTheNextRequestServed) {
  road().run(app, assistant);
  app.onState = nullptr;

  assistant.asksForState(2);

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("state", 2)}));
}

const RoadToACallback kRoadsToACallback[] = {
    {"OfAState", [](fake::App &, fake::Assistant &assistant) { return assistant.asksForState(1); },
     fake::stateFailure("App state request execution timed out", 1)},
    {"OfAnAction",
     [](fake::App &, fake::Assistant &assistant) { return assistant.asksForAction("play", 1); },
     fake::actionFailure("Action execution request timed out", 1)},
    {"OfALateAction",
     [](fake::App &app, fake::Assistant &assistant) {
       const int result = assistant.asksForAction("late", 1);
       app.registersFor("late");
       platform().clock.advance(0.02);
       return result;
     },
     fake::actionFailure("Action execution request timed out", 1), true},
};

const Thrown kThrown[] = {
    {"ThatIsStandard", [] { throw std::runtime_error("of the application"); },
     "stopped an exception: of the application"},
    {"ThatIsALogicError", [] { throw std::logic_error("a mistake"); },
     "stopped an exception: a mistake"},
    {"ThatIsNoMemory", [] { throw std::bad_alloc(); }, "stopped an exception: std::bad_alloc"},
    {"ThatIsANumber", [] { throw 42; }, "stopped an exception of another type than std::exception"},
};

INSTANTIATE_TEST_SUITE_P(, AnExceptionOfACallback,
                         testing::Combine(testing::ValuesIn(kRoadsToACallback),
                                          testing::ValuesIn(kThrown)),
                         [](const auto &tested) {
                           return std::string(std::get<0>(tested.param).name)
                                  + std::get<1>(tested.param).name;
                         });

// The response of a timeout or of a request that is given up finds no memory: the timer ends all
// the same.
class AnExceptionInATimer : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    platform().during["rpc_port_parcel_send"] = [] { throw std::bad_alloc(); };
  }

  void expectEnded() {
    EXPECT_THAT(log(), Contains("stopped an exception: std::bad_alloc"));
    EXPECT_THAT(platform().clock.alive(), testing::IsEmpty());
    EXPECT_THAT(assistant.callbacks(), testing::IsEmpty());
  }
};

TEST_F(AnExceptionInATimer, EndsTheTimeoutOfAState) {
  assistant.asksForState(1);

  platform().clock.advance(30);

  expectEnded();
  EXPECT_EQ(app.answersState("late"), NORIX_ERROR_OPERATION_FAILED); // The handle is still known.
}

TEST_F(AnExceptionInATimer, EndsTheTimeoutOfAnAction) {
  assistant.asksForAction("play", 1);

  platform().clock.advance(30);

  expectEnded();
  EXPECT_EQ(app.answersAction("late"), NORIX_ERROR_OPERATION_FAILED); // The handle is still known.
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnExceptionInATimer, EndsARequestThatIsGivenUp) {
  assistant.asksForAction("late", 1);

  platform().clock.advance(0.12);

  expectEnded();
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
  expectLeft(DeliberateLeak::ParkedBundle);
}

// The exported functions stop nothing: what is thrown below reaches the application.
TEST_F(AnExceptionInATimer, ReachesTheApplicationThatAnswers) {
  assistant.asksForState(1);

  EXPECT_THROW(app.answersState("state"), std::bad_alloc);
}

} // namespace
