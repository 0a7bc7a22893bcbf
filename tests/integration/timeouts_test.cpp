// SPDX-License-Identifier: Apache-2.0
//
// The real 30 seconds. Each case waits for them; side by side they cost half a minute.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"
#include "integration/harness/contents.h"

#include <norix.h>

namespace integration {
namespace {

constexpr double kLongerThanTheLibrary = 45.0;

class ATimedOutAction : public IntegrationTest {};
class ATimedOutStateRequest : public IntegrationTest {};

TEST_F(ATimedOutAction, IsAnsweredByTheLibraryAndNotAnyMoreByTheApplication) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  const Request request = actionRequest("play");
  const Request next = stateRequest();

  const Answer answer = session.ask(request, kLongerThanTheLibrary);
  const int lateResult = application.completeAction(application.awaitRequest().number, "late");
  session.client().send(next);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"result", ""},
                      {"status_code", "ACTION_EXECUTION_FAILURE"},
                      {"status_msg", "Action execution request timed out"},
                      {"requestId", bytesOf(request.requestId)}}));
  EXPECT_EQ(lateResult, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

TEST_F(ATimedOutStateRequest, IsAnsweredByTheLibraryAndNotAnyMoreByTheApplication) {
  TestApplication application(runtime);
  application.setState();
  Session session(application.id());
  const Request request = stateRequest();
  const Request next = actionRequest("unknown");

  const Answer answer = session.ask(request, kLongerThanTheLibrary);
  const int lateResult = application.completeState(application.awaitRequest().number, "late");
  session.client().send(next);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"appContext", ""},
                      {"status_code", "ACTION_EXECUTION_FAILURE"},
                      {"status_msg", "App state request execution timed out"},
                      {"requestId", bytesOf(request.requestId)}}));
  EXPECT_EQ(lateResult, NORIX_ERROR_NONE);
  EXPECT_EQ(session.next(kBound).response.requestId(), next.requestId);
}

} // namespace
} // namespace integration
