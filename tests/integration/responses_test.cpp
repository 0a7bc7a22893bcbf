// SPDX-License-Identifier: Apache-2.0
//
// What comes back to the assistant, to the byte.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"
#include "integration/harness/contents.h"

namespace integration {
namespace {

class AnActionResponse : public IntegrationTest {};
class AStateResponse : public IntegrationTest {};
class AResponse : public IntegrationTest {};

TEST_F(AnActionResponse, CarriesStatusResultAndRequestId) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");
  Session session(application.id());

  const Request request = actionRequest("play");
  const Answer answer = session.ask(request, kBound);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"status_code", "ACTION_EXECUTION_SUCCESS"},
                      {"result", "playing"},
                      {"requestId", bytesOf(request.requestId)}}));
}

TEST_F(AnActionResponse, SaysThatNoCallbackIsRegistered) {
  TestApplication application(runtime);
  Session session(application.id());

  const Request request = actionRequest("play");
  const Answer answer = session.ask(request, kBound);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"result", ""},
                      {"status_code", "ACTION_EXECUTION_FAILURE"},
                      {"status_msg", "Action Execution callback not registered"},
                      {"requestId", bytesOf(request.requestId)}}));
}

TEST_F(AStateResponse, CarriesStatusStateAndRequestId) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("{\"playing\":true}");
  Session session(application.id());

  const Request request = stateRequest();
  const Answer answer = session.ask(request, kBound);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"status_code", "ACTION_EXECUTION_SUCCESS"},
                      {"appContext", "{\"playing\":true}"},
                      {"requestId", bytesOf(request.requestId)}}));
}

TEST_F(AStateResponse, SaysThatNoCallbackIsRegistered) {
  TestApplication application(runtime);
  Session session(application.id());

  const Request request = stateRequest();
  const Answer answer = session.ask(request, kBound);

  EXPECT_EQ(contentsOf(answer.response.content()),
            (Contents{{"appContext", ""},
                      {"status_code", "ACTION_EXECUTION_FAILURE"},
                      {"status_msg", "App state request callback not registered"},
                      {"requestId", bytesOf(request.requestId)}}));
}

TEST_F(AResponse, NamesTheApplicationThatItComesFrom) {
  TestApplication application(runtime);
  Session session(application.id());

  const Answer state = session.ask(stateRequest(), kBound);
  const Answer action = session.ask(actionRequest("play"), kBound);

  EXPECT_EQ(state.appId, application.id());
  EXPECT_EQ(action.appId, application.id());
}

TEST_F(AResponse, CarriesAnAnswerThatComesAfterTheCallback) {
  TestApplication application(runtime);
  application.setAction("play");
  Session session(application.id());
  const Request request = actionRequest("play");
  session.client().send(request);

  const int result = application.completeAction(application.awaitRequest().number, "at last");

  EXPECT_EQ(result, 0);
  EXPECT_EQ(session.await(request.requestId, kBound).response.text(), "at last");
}

TEST_F(AResponse, CarriesTheTextNullForANullAnswer) {
  TestApplication application(runtime);
  application.setAction("play");
  application.setState();
  Session session(application.id());
  const Request action = actionRequest("play");
  const Request state = stateRequest();

  session.client().send(action);
  application.completeAction(application.awaitRequest().number, std::nullopt);
  session.client().send(state);
  application.completeState(application.awaitRequest().number, std::nullopt);

  EXPECT_EQ(session.await(action.requestId, kBound).response.text(), "null");
  EXPECT_EQ(session.await(state.requestId, kBound).response.text(), "null");
}

TEST_F(AResponse, CarriesARequestIdOfZeroWhenTheRequestHadNone) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("idle");
  Session session(application.id());
  const BundlePtr request(bundle_create());
  bundle_add_str(request.get(), "actionId", "getAppContext");

  session.client().send(request.get());

  EXPECT_EQ(session.next(kBound).response.requestId(), 0U);
}

// Texts that a careless encoding would change.
class AnAnswerText : public AResponse, public testing::WithParamInterface<Named<std::string>> {};

using Text = Named<std::string>;
INSTANTIATE_TEST_SUITE_P(, AnAnswerText,
                         testing::Values(Text{"Empty", ""}, Text{"Null", "null"},
                                         Text{"Format", "%s %n %%"},
                                         Text{"Lines", "two\nlines\r\n"},
                                         Text{"Quotes", "tab\tquote\"'\\"},
                                         Text{"Unicode", "\xc3\xa4 \xf0\x9f\x8e\xb5"},
                                         Text{"Long", std::string(200'000, 'x')}));

TEST_P(AnAnswerText, ArrivesUnchanged) {
  TestApplication application(runtime);
  application.setAction("play");
  application.setState();
  application.answerAtOnce(GetParam().value);
  Session session(application.id());

  const Answer result = session.ask(actionRequest("play"), kBound);
  const Answer state = session.ask(stateRequest(), kBound);

  EXPECT_EQ(result.response.text(), GetParam().value);
  EXPECT_EQ(state.response.text(), GetParam().value);
}

} // namespace
} // namespace integration
