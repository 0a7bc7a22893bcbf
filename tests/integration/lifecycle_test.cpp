// SPDX-License-Identifier: Apache-2.0
//
// Initialising and deinitialising the library, as the assistant and the application see it.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

class ANewApplication : public IntegrationTest {};
class AnInitialisedApplication : public IntegrationTest {};
class ADeinitialisedApplication : public IntegrationTest {};

TEST_F(ANewApplication, CanRegisterNothing) {
  TestApplication application(runtime, {});

  EXPECT_EQ(application.setState(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(application.unsetState(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(application.setAction("play"), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(application.unsetAction("play"), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(ANewApplication, MayBeDeinitialised) {
  TestApplication application(runtime, {});

  EXPECT_EQ(application.deinitialize(), NORIX_ERROR_NONE);
}

TEST_F(ANewApplication, CannotBeConnectedTo) {
  const TestApplication application(runtime, {});

  EXPECT_EQ(failureOf([&] { Session session(application.id()); }), Failure::CannotConnect);
}

TEST_F(ANewApplication, CanBeInitialisedOnceItHasDescriptorsAgain) {
  TestApplication application(runtime, {});
  application.takeDescriptors();
  EXPECT_EQ(application.initialize(), NORIX_ERROR_OPERATION_FAILED);

  application.giveDescriptors();

  EXPECT_EQ(application.initialize(), NORIX_ERROR_NONE);
  EXPECT_TRUE(Session(application.id()).ask(stateRequest(), kBound).response.isState());
}

TEST_F(AnInitialisedApplication, MayBeInitialisedAgain) {
  TestApplication application(runtime);
  Session session(application.id());

  EXPECT_EQ(application.initialize(), NORIX_ERROR_NONE);
  EXPECT_TRUE(session.ask(stateRequest(), kBound).response.isState());
}

TEST_F(AnInitialisedApplication, KeepsItsIdToItself) {
  const TestApplication first(runtime);
  TestApplication second(runtime, {});

  EXPECT_EQ(second.initialize(), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(ADeinitialisedApplication, HangsUp) {
  TestApplication application(runtime);
  Session session(application.id());

  application.deinitialize();

  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
}

TEST_F(ADeinitialisedApplication, MayHaveDoneSoInsideACallback) {
  TestApplication application(runtime);
  application.setAction("play");
  application.deinitialiseAtOnce();
  Session session(application.id());

  session.client().send(actionRequest("play"));

  EXPECT_EQ(application.awaitDeinitialised(), NORIX_ERROR_NONE);
  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
  EXPECT_EQ(application.initialize(), NORIX_ERROR_NONE);
}

TEST_F(ADeinitialisedApplication, ServesAgainWhenItIsInitialisedAgain) {
  TestApplication application(runtime);
  application.deinitialize();

  application.initialize();
  application.setState();
  application.answerAtOnce("back");
  Session session(application.id());

  EXPECT_EQ(session.ask(stateRequest(), kBound).response.text(), "back");
}

TEST_F(ADeinitialisedApplication, HasForgottenItsCallbacks) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("play");
  application.deinitialize();

  application.initialize();
  Session session(application.id());

  EXPECT_FALSE(session.ask(stateRequest(), kBound).response.succeeded());
  EXPECT_FALSE(session.ask(actionRequest("play"), kBound).response.succeeded());
}

TEST_F(ADeinitialisedApplication, EndsWithoutALeak) {
  TestApplication application(runtime);
  application.setState();
  application.setAction("play");
  application.answerAtOnce("well");
  {
    Session session(application.id());
    session.ask(stateRequest(), kBound);
    session.ask(actionRequest("play"), kBound);
  }

  application.deinitialize();
  application.process().closeInput();

  // The sanitizers' build makes a leak an exit status.
  EXPECT_EQ(application.process().wait(), 0) << application.process().errors();
}

TEST_F(ADeinitialisedApplication, NumbersItsRequestsFromTheBeginning) {
  TestApplication application(runtime);
  application.setState();
  Session(application.id()).client().send(stateRequest());
  const int before = application.awaitRequest().handleNumber;
  application.deinitialize();

  application.initialize();
  application.setState();
  Session session(application.id());
  session.client().send(stateRequest());

  EXPECT_EQ(application.awaitRequest().handleNumber, before);
}

} // namespace
} // namespace integration
