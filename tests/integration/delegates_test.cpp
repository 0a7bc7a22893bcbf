// SPDX-License-Identifier: Apache-2.0
//
// The delegate through which an assistant receives answers.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

#include <limits>

namespace integration {
namespace {

class ADelegate : public IntegrationTest {};

class ADelegateRecord : public IntegrationTest,
                        public testing::WithParamInterface<Named<Delegate>> {};

using Record = Named<Delegate>;
INSTANTIATE_TEST_SUITE_P(, ADelegateRecord,
                         testing::Values(Record{"Usual", {1, 0, false}},
                                         Record{"NegativeSequenceId", {1, -3, false}},
                                         Record{"ForOneUse", {1, 42, true}},
                                         Record{"UnknownType", {-7, 1, true}},
                                         Record{"Extremes",
                                                {std::numeric_limits<int>::min(),
                                                 std::numeric_limits<int>::max(), false}}));

TEST_P(ADelegateRecord, ComesBackAsItWasSent) {
  TestApplication application(runtime);
  Session session(application.id(), kBound, GetParam().value);

  const Answer answer = session.ask(stateRequest(), kBound);

  EXPECT_EQ(answer.delegate.id, GetParam().value.id);
  EXPECT_EQ(answer.delegate.seqId, GetParam().value.seqId);
  EXPECT_EQ(answer.delegate.once, GetParam().value.once);
}

TEST_F(ADelegate, ForOneUseIsRefusedAtTheSecond) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id(), kBound, Delegate{1, 0, true});
  const Request first = actionRequest("play");

  session.client().send(first);
  const int firstResult = application.completeAction(application.awaitRequest().number, "one");
  session.client().send(actionRequest("play"));
  const int secondResult = application.completeAction(application.awaitRequest().number, "two");

  EXPECT_EQ(firstResult, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), first.requestId);
  EXPECT_EQ(secondResult, NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(ADelegate, IsReplacedByTheNextOfItsSender) {
  TestApplication application(runtime);
  Session session(application.id(), kBound, Delegate{1, 1, true});
  session.ask(stateRequest(), kBound);

  session.client().setCallback(Delegate{1, 2, true});
  const Answer answer = session.ask(stateRequest(), kBound);

  EXPECT_EQ(answer.delegate.seqId, 2);
}

TEST_F(ADelegate, IsNotUsedAnyMoreOnceTakenBack) {
  TestApplication application(runtime);
  application.setAction("play");
  application.setState();
  Session session(application.id());

  session.client().unsetCallback();
  session.client().send(actionRequest("play"));
  const int action = application.completeAction(application.awaitRequest().number, "unheard");
  session.client().send(stateRequest());
  const int state = application.completeState(application.awaitRequest().number, "unheard");

  EXPECT_EQ(action, NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(state, NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(ADelegate, MayBeTakenBackWithoutHavingBeenGiven) {
  TestApplication application(runtime);
  Session session = Session::connected(application.id());

  EXPECT_NO_THROW(session.client().unsetCallback());
}

TEST_F(ADelegate, IsMissedOnlyWhenTheAnswerIsSent) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session = Session::connected(application.id());

  session.client().send(actionRequest("play"));

  EXPECT_EQ(application.completeAction(application.awaitRequest().number, "unheard"),
            NORIX_ERROR_OPERATION_FAILED);
}

} // namespace
} // namespace integration
