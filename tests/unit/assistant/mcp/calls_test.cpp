// SPDX-License-Identifier: Apache-2.0
//
// Tool calls: arguments, answers, cancellation, consent.
#include "unit/assistant/mcp/Desk.h"

#include "assistant/mcp/results.h"
#include "assistant/mcp/versions.h"

#include <gtest/gtest.h>

using namespace norix::assistant::mcp;
using namespace norix::assistant::mcp::testing;

namespace {

const Json kElicitation = {{"elicitation", {{"form", Json::object()}}}};

Json call(const std::string &tool, const Json &arguments = Json::object()) {
  return {{"name", tool}, {"arguments", arguments}};
}

Outcome answered(const std::string &text) {
  return {Outcome::Kind::Answered, text};
}

class AToolCall : public ::testing::Test {
protected:
  AToolCall() { desk.handshake(); }

  /// Calls a tool and has the application answer.
  Json resultOf(const std::string &tool, const Outcome &outcome) {
    desk.legacy(1, "tools/call", call(tool));
    desk.executions().back().done(outcome);
    return desk.last().at("result");
  }

  Desk desk;
};

TEST_F(AToolCall, ReachesTheApplicationWithItsArguments) {
  desk.legacy(1, "tools/call", call("player_volume", {{"volume", 40}}));

  ASSERT_EQ(desk.executions().size(), 1U);
  EXPECT_EQ(desk.executions().front().appId, "org.example.player");
  EXPECT_EQ(desk.executions().front().work.actionId, "volume");
  EXPECT_EQ(desk.executions().front().work.params, R"({"volume":40})");
}

TEST_F(AToolCall, IsAnsweredWithWhatTheApplicationSays) {
  const Json result = resultOf("player_play", answered("It plays"));

  EXPECT_EQ(toLine(result), R"({"content":[{"type":"text","text":"It plays"}]})");
}

TEST_F(AToolCall, OfAnUnknownToolIsAProtocolError) {
  desk.legacy(1, "tools/call", call("player_fly"));

  EXPECT_EQ(desk.lastError(), InvalidParams);
}

TEST_F(AToolCall, WithBadArgumentsTellsTheModelWhatIsExpectedAndExecutesNothing) {
  desk.legacy(1, "tools/call", call("player_volume", {{"volume", 400}}));
  const Json result = desk.last().at("result");

  EXPECT_EQ(result.at("isError"), true);
  const auto text = result.at("content").at(0).at("text").get<std::string>();
  EXPECT_NE(text.find("/volume"), std::string::npos) << text;
  EXPECT_NE(text.find("100"), std::string::npos) << text;
  EXPECT_NE(text.find("400"), std::string::npos) << text;
  EXPECT_TRUE(desk.executions().empty());
}

TEST_F(AToolCall, WithArgumentsThatAreNoObjectTellsTheModel) {
  desk.legacy(1, "tools/call", {{"name", "player_play"}, {"arguments", 7}});

  EXPECT_EQ(desk.last().at("result").at("isError"), true);
  EXPECT_TRUE(desk.executions().empty());
}

TEST_F(AToolCall, TakesNullForNoArguments) {
  desk.legacy(1, "tools/call", {{"name", "player_play"}, {"arguments", nullptr}});

  ASSERT_EQ(desk.executions().size(), 1U);
  EXPECT_EQ(desk.executions().front().work.params, "{}");
}

TEST_F(AToolCall, ThatFailsIsAnErrorOfTheToolWithoutStructuredContent) {
  for (const Outcome::Kind kind :
       {Outcome::Kind::Failed, Outcome::Kind::NotExecuted, Outcome::Kind::Unknown}) {
    const Json result = resultOf("player_state", {kind, "why"});

    EXPECT_EQ(result.at("isError"), true);
    EXPECT_EQ(result.at("content").at(0).at("text"), "why");
    EXPECT_FALSE(result.contains("structuredContent"));
  }
}

TEST_F(AToolCall, ForTheStateAlsoGivesItAsTheDeclaredForm) {
  const Json result = resultOf("player_state", answered(R"({"volume": 7})"));

  EXPECT_EQ(toLine(result.at("structuredContent")), R"({"volume":7})");
  EXPECT_EQ(result.at("content").at(0).at("text"), R"({"volume": 7})");
}

TEST_F(AToolCall, ForAStateOfAnotherFormIsAnErrorThatShowsIt) {
  for (const char *state : {"loud", "[7]", R"({"volume":"loud"})", "{}"}) {
    const Json result = resultOf("player_state", answered(state));

    EXPECT_EQ(result.at("isError"), true) << state;
    EXPECT_FALSE(result.contains("structuredContent")) << state;
    EXPECT_NE(result.at("content").at(0).at("text").get<std::string>().find(state),
              std::string::npos);
  }
}

TEST_F(AToolCall, ShowsControlCharactersInsteadOfSendingThem) {
  const Json result = resultOf("player_play", answered("a\x1b[31mb\tc\nd\xc2\x9b"
                                                       "e\x7f\xff"));

  EXPECT_EQ(result.at("content").at(0).at("text"), "a\\x1b[31mb\tc\nd\\x9b"
                                                   "e\\x7f\xef\xbf\xbd");
}

TEST_F(AToolCall, CutsALongAnswerBetweenTwoCharactersAndSaysSo) {
  std::string answer(kAnswerBytes - 1, 'a');
  answer += "\xc3\xa4 and more";
  const Json result = resultOf("player_play", answered(answer));
  const auto text = result.at("content").at(0).at("text").get<std::string>();

  EXPECT_EQ(text.substr(0, kAnswerBytes), std::string(kAnswerBytes - 1, 'a') + "\n");
  EXPECT_NE(text.find("[cut: the answer has " + std::to_string(answer.size())), std::string::npos);
}

TEST_F(AToolCall, LeavesOneLineInTheLogWithoutItsArguments) {
  desk.legacy(1, "tools/call", call("player_volume", {{"volume", 41}}));
  desk.executions().back().done(answered("done"));

  ASSERT_EQ(desk.log().size(), 1U);
  EXPECT_EQ(desk.log().front().rfind("player_volume  waited ", 0), 0U);
  EXPECT_EQ(desk.log().front().find("41"), std::string::npos);
}

TEST_F(AToolCall, ThatWasCancelledIsForgottenAndNeverAnswered) {
  desk.legacy("a", "tools/call", call("player_play"));
  desk.cancel("a");
  EXPECT_TRUE(desk.executions().front().cancelled);

  desk.executions().front().done(answered("late"));
  EXPECT_TRUE(desk.last().is_null());
}

TEST_F(AToolCall, IsNotCancelledByAnIdOfAnotherType) {
  desk.legacy(1, "tools/call", call("player_play"));
  desk.cancel("1");

  EXPECT_FALSE(desk.executions().front().cancelled);
}

TEST_F(AToolCall, ReportsProgressWhileItWaitsWhenItsCallerWantsIt) {
  Desk quick({"1", false, 25, 0.01});
  quick.handshake();
  Json params = call("player_play");
  params["_meta"]["progressToken"] = "token";
  quick.legacy(1, "tools/call", params);

  double before = 0;
  for (int round = 0; round < 3; ++round) {
    quick.turnUntilSent();
    const Json told = quick.last();
    EXPECT_EQ(told.at("method"), "notifications/progress");
    EXPECT_EQ(told.at("params").at("progressToken"), "token");
    EXPECT_GT(told.at("params").at("progress").get<double>(), before);
    before = told.at("params").at("progress").get<double>();
  }
}

TEST_F(AToolCall, ThatNeedsConsentIsRefusedWhereTheClientCannotAsk) {
  desk.legacy(1, "tools/call", call("player_wipe"));

  EXPECT_NE(desk.lastText().find("--yes"), std::string::npos);
  EXPECT_TRUE(desk.executions().empty());
}

TEST_F(AToolCall, ThatNeedsConsentIsExecutedWhereTheUserAllowedAll) {
  Desk allowed({"1", true});
  allowed.handshake();
  allowed.legacy(1, "tools/call", call("player_wipe"));

  EXPECT_EQ(allowed.executions().size(), 1U);
}

struct LegacyAnswer {
  const char *name;
  Json message;
  bool executes;
};

void PrintTo(const LegacyAnswer &row, std::ostream *out) {
  *out << row.name;
}

class ALegacyUser : public ::testing::TestWithParam<LegacyAnswer> {};

TEST_P(ALegacyUser, DecidesWhetherAnActionIsExecuted) {
  Desk desk;
  desk.handshake(kElicitation);
  desk.legacy(1, "tools/call", call("player_wipe"));
  const Json question = desk.last();
  ASSERT_EQ(question.at("method"), "elicitation/create");
  EXPECT_NE(question.at("params").at("message").get<std::string>().find("Wipe"), std::string::npos);

  Json answer = GetParam().message;
  answer["jsonrpc"] = "2.0";
  answer["id"] = question.at("id");
  desk.line(toLine(answer));

  EXPECT_EQ(desk.executions().size(), GetParam().executes ? 1U : 0U);
  EXPECT_EQ(desk.last().is_null(), GetParam().executes);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, ALegacyUser,
    ::testing::Values(
        LegacyAnswer{"Confirms",
                     {{"result", {{"action", "accept"}, {"content", {{"confirm", true}}}}}},
                     true},
        LegacyAnswer{"Unticks",
                     {{"result", {{"action", "accept"}, {"content", {{"confirm", false}}}}}},
                     false},
        LegacyAnswer{"SendsAnEmptyForm", {{"result", {{"action", "accept"}}}}, false},
        LegacyAnswer{"Declines", {{"result", {{"action", "decline"}}}}, false},
        LegacyAnswer{"Cancels", {{"result", {{"action", "cancel"}}}}, false},
        LegacyAnswer{"CannotBeAsked", {{"error", {{"code", -1}, {"message", "no"}}}}, false},
        LegacyAnswer{"AnswersNonsense", {{"result", 7}}, false}),
    [](const auto &row) { return row.param.name; });

TEST(ALegacyQuestion, EndsWhenTheUserTakesTooLong) {
  Desk desk({"1", false, 0.01});
  desk.handshake(kElicitation);
  desk.legacy(1, "tools/call", call("player_wipe"));
  desk.last();
  desk.turnUntilSent();

  EXPECT_NE(desk.lastText().find("in time"), std::string::npos);
}

TEST(ALegacyQuestion, IsForgottenWithItsCall) {
  Desk desk;
  desk.handshake(kElicitation);
  desk.legacy(1, "tools/call", call("player_wipe"));
  const Json question = desk.last();
  desk.cancel(1);
  desk.line(toLine(Json{{"jsonrpc", "2.0"},
                        {"id", question.at("id")},
                        {"result", {{"action", "accept"}, {"content", {{"confirm", true}}}}}}));

  EXPECT_TRUE(desk.executions().empty());
  EXPECT_TRUE(desk.last().is_null());
}

class AModernUser : public ::testing::Test {
protected:
  /// The question about a call; its token is in requestState.
  Json ask(const Json &arguments = Json::object()) {
    desk.modern(1, "tools/call", call("player_wipe", arguments), kElicitation);
    return desk.last().at("result");
  }

  void answer(const Json &state, const Json &reply) {
    Json params = call("player_wipe");
    params["requestState"] = state;
    params["inputResponses"]["confirm"] = reply;
    desk.modern(2, "tools/call", params, kElicitation);
  }

  const Json yes = {{"action", "accept"}, {"content", {{"confirm", true}}}};
  Desk desk;
};

TEST_F(AModernUser, IsAskedThroughTheResult) {
  const Json result = ask();

  EXPECT_EQ(result.at("resultType"), "input_required");
  EXPECT_EQ(result.at("inputRequests").at("confirm").at("method"), "elicitation/create");
  EXPECT_TRUE(desk.executions().empty());
}

TEST_F(AModernUser, ConfirmsWithTheSameCallAgain) {
  answer(ask().at("requestState"), yes);

  EXPECT_EQ(desk.executions().size(), 1U);
}

TEST_F(AModernUser, WhoDeclinesHasNothingExecuted) {
  answer(ask().at("requestState"), {{"action", "decline"}});

  EXPECT_TRUE(desk.executions().empty());
  EXPECT_NE(desk.lastText().find("did not confirm"), std::string::npos);
}

TEST_F(AModernUser, ConfirmsOnlyOnce) {
  const Json state = ask().at("requestState");
  answer(state, yes);
  desk.modern(
      3, "tools/call",
      {{"name", "player_wipe"}, {"requestState", state}, {"inputResponses", {{"confirm", yes}}}},
      kElicitation);

  EXPECT_EQ(desk.lastError(), InvalidParams);
  EXPECT_EQ(desk.executions().size(), 1U);
}

TEST_F(AModernUser, CannotConfirmWithAnInventedToken) {
  for (const Json &state : {Json("invented"), Json(7), Json()}) {
    ask();
    answer(state, yes);

    EXPECT_EQ(desk.lastError(), InvalidParams);
  }
  EXPECT_TRUE(desk.executions().empty());
}

TEST(AStateResource, IsReadFromTheApplication) {
  Desk desk;
  desk.modern(1, "resources/read", {{"uri", "norix://org.example.player/state"}});
  ASSERT_TRUE(desk.executions().back().work.isState());
  desk.executions().back().done(answered(R"({"volume":3})"));
  const Json content = desk.last().at("result").at("contents").at(0);

  EXPECT_EQ(content.at("text"), R"({"volume":3})");
  EXPECT_EQ(content.at("mimeType"), "application/json");
  EXPECT_EQ(content.at("uri"), "norix://org.example.player/state");
}

TEST(AStateResource, ThatCannotBeReadIsAnErrorInItsWords) {
  Desk desk;
  desk.handshake();
  desk.legacy(1, "resources/read", {{"uri", "norix://org.example.player/state"}});
  desk.executions().back().done({Outcome::Kind::NotExecuted, "it does not run"});
  const Json error = desk.last().at("error");

  EXPECT_EQ(error.at("code"), InternalError);
  EXPECT_EQ(error.at("message"), "it does not run");
}

TEST(APrompt, FillsItsPlaceholders) {
  Desk desk;
  desk.handshake();
  desk.legacy(1, "prompts/get",
              {{"name", "player_volume_say_1"}, {"arguments", {{"volume", "40"}}}});
  const Json message = desk.last().at("result").at("messages").at(0);

  EXPECT_EQ(message.at("role"), "user");
  EXPECT_EQ(message.at("content").at("text"), "set the volume to 40");
}

TEST(APrompt, WithoutItsArgumentIsAnError) {
  Desk desk;
  desk.handshake();
  desk.legacy(1, "prompts/get", {{"name", "player_volume_say_1"}});

  EXPECT_EQ(desk.lastError(), InvalidParams);
}

} // namespace
