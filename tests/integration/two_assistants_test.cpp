// SPDX-License-Identifier: Apache-2.0
//
// Several assistants that are connected to one application at the same time.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

class TwoAssistants : public IntegrationTest {
protected:
  Session connectAs(const std::string &senderId, const TestApplication &application,
                    const Delegate &delegate = {}) {
    runtime.sendAs(senderId);
    return Session(application.id(), kBound, delegate);
  }
};

TEST_F(TwoAssistants, AreEachAnswered) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("well");
  Session one = connectAs("com.example.one", application);
  Session two = connectAs("com.example.two", application);

  EXPECT_EQ(one.ask(stateRequest(), kBound).response.text(), "well");
  EXPECT_EQ(two.ask(stateRequest(), kBound).response.text(), "well");
  EXPECT_EQ(one.ask(stateRequest(), kBound).response.text(), "well");
}

TEST_F(TwoAssistants, TakeTheRequestInProgressFromEachOther) {
  TestApplication application(runtime);
  application.setAction("play");
  Session one = connectAs("com.example.one", application);
  Session two = connectAs("com.example.two", application);
  const Request lost = actionRequest("play");
  const Request served = actionRequest("play");
  const Request next = stateRequest();

  one.client().send(lost);
  const int lostNumber = application.awaitRequest().number;
  two.client().send(served);
  const int servedNumber = application.awaitRequest().number;
  application.completeAction(lostNumber, "unheard");
  application.completeAction(servedNumber, "heard");
  EXPECT_EQ(two.next(kBound).response.requestId(), served.requestId);
  one.client().send(next);

  EXPECT_EQ(one.next(kBound).response.requestId(), next.requestId);
}

TEST_F(TwoAssistants, WithOneIdAreAnsweredThroughTheDelegateGivenLast) {
  TestApplication application(runtime);
  Session one = connectAs("com.example.one", application, Delegate{1, 1, false});
  Session two = connectAs("com.example.one", application, Delegate{1, 2, false});
  const Request request = stateRequest();

  one.client().send(request);

  EXPECT_EQ(two.next(kBound).response.requestId(), request.requestId);
}

} // namespace
} // namespace integration
