// SPDX-License-Identifier: Apache-2.0
//
// An agent, the bridge and an application: three processes.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace integration {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char *kAppId = "org.example.test";
constexpr const char *kDeclarations = R"({"version": 1, "actions": [
  {"id": "play", "title": "Play", "description": "Plays something",
   "parameters": {"type": "object",
                  "properties": {"n": {"type": "integer", "description": "Which one"}}}},
  {"id": "absent", "title": "Absent", "description": "Nobody registers it"}]})";

class TheBridge : public IntegrationTest {
protected:
  TheBridge() {
    runtime.install(kAppId, "1.0-beta");
    declare(kDeclarations);
  }

  std::string folder() const {
    return std::string(std::getenv("NORIX_DESKTOP_APPS")) + "/" + kAppId;
  }

  void declare(const std::string &content) const {
    std::filesystem::create_directories(folder() + "/shared/res");
    std::ofstream(folder() + "/shared/res/norix-actions.json") << content;
  }

  /// Starts a bridge, and shakes hands.
  Process startBridge(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"mcp", kAppId});
    Process bridge = startAssistant(options);
    ask(bridge, 0, "initialize",
        {{"protocolVersion", "2025-11-25"}, {"capabilities", json::object()}});
    EXPECT_EQ(json::parse(bridge.readLine()).at("id"), 0);
    bridge.writeLine(R"({"jsonrpc":"2.0","method":"notifications/initialized"})");
    return bridge;
  }

  static void ask(Process &bridge, const json &id, const std::string &method,
                  const json &params = json::object()) {
    bridge.writeLine(
        json({{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}}).dump());
  }

  static void call(Process &bridge, const json &id, const std::string &tool,
                   const json &arguments = json::object()) {
    ask(bridge, id, "tools/call", {{"name", tool}, {"arguments", arguments}});
  }

  static std::string textOf(const json &message) {
    return message.at("result").at("content").at(0).at("text").get<std::string>();
  }
};

TEST_F(TheBridge, HasTheApplicationExecuteAToolCall) {
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("playing");
  Process bridge = startBridge();
  call(bridge, "a", "test_play", {{"n", 7}});
  const json answer = json::parse(bridge.readLine());

  EXPECT_EQ(answer.at("id"), "a");
  EXPECT_EQ(textOf(answer), "playing");
  EXPECT_EQ(application.awaitRequest().actionParams, R"({"n":7})");
}

TEST_F(TheBridge, ReadsTheStateThroughTheToolAndTheResource) {
  TestApplication application(runtime);
  application.setState();
  application.answerAtOnce("idle");
  Process bridge = startBridge();
  call(bridge, 1, "test_state");
  EXPECT_EQ(textOf(json::parse(bridge.readLine())), "idle");

  ask(bridge, 2, "resources/read", {{"uri", "norix://org.example.test/state"}});
  EXPECT_EQ(json::parse(bridge.readLine()).at("result").at("contents").at(0).at("text"), "idle");
}

TEST_F(TheBridge, StartsAndListsWithoutAnApplication) {
  Process bridge = startBridge();
  ask(bridge, 1, "tools/list");

  EXPECT_EQ(json::parse(bridge.readLine()).at("result").at("tools").size(), 3U);
}

TEST_F(TheBridge, SaysThatTheApplicationDoesNotRun) {
  Process bridge = startBridge();
  call(bridge, 1, "test_play");
  const json answer = json::parse(bridge.readLine());

  EXPECT_EQ(answer.at("result").at("isError"), true);
  EXPECT_THAT(textOf(answer), HasSubstr("not running"));
}

TEST_F(TheBridge, SaysThatTheApplicationHasNotRegisteredTheAction) {
  TestApplication application(runtime);
  Process bridge = startBridge();
  call(bridge, 1, "test_absent");

  EXPECT_THAT(textOf(json::parse(bridge.readLine())), HasSubstr("has not registered"));
}

TEST_F(TheBridge, SaysThatTheAllowListLacksTheSender) {
  TestApplication::Options options;
  options.allowList = runtime.write("allow_list.dat", "org.example.somebody\n");
  TestApplication application = TestApplication::initialised(runtime, options);
  Process bridge = startBridge();
  call(bridge, 1, "test_play");

  EXPECT_THAT(textOf(json::parse(bridge.readLine())), HasSubstr("allow list"));
}

TEST_F(TheBridge, LeavesTheOutcomeOpenWhenTheApplicationIsKilledMeanwhile) {
  TestApplication application(runtime);
  application.setAction("play");
  Process bridge = startBridge();
  call(bridge, 1, "test_play");
  application.awaitRequest();
  application.process().signal(SIGKILL);

  EXPECT_THAT(textOf(json::parse(bridge.readLine())), HasSubstr("Outcome unknown"));
}

TEST_F(TheBridge, ConnectsAgainAfterTheApplicationWasStartedAgain) {
  Process bridge = startBridge();
  for (int round = 0; round < 3; ++round) {
    TestApplication application(runtime);
    application.setAction("play");
    application.answerAtOnce(std::to_string(round));
    call(bridge, round, "test_play");
    EXPECT_EQ(textOf(json::parse(bridge.readLine())), std::to_string(round));
    application.process().signal(SIGKILL);
    application.process().wait();
  }
}

TEST_F(TheBridge, NeverExecutesWhatWasCancelledWhileItWaited) {
  TestApplication application(runtime);
  application.setAction("play");
  Process bridge = startBridge();
  call(bridge, 1, "test_play", {{"n", 1}});
  const Received first = application.awaitRequest();
  call(bridge, 2, "test_play", {{"n", 2}});
  call(bridge, 3, "test_play", {{"n", 3}});
  bridge.writeLine(
      R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":2}})");
  ask(bridge, "seen", "ping");
  EXPECT_EQ(json::parse(bridge.readLine()).at("id"), "seen");

  application.completeAction(first.number, "one");
  EXPECT_EQ(textOf(json::parse(bridge.readLine())), "one");
  const Received next = application.awaitRequest();
  EXPECT_EQ(next.actionParams, R"({"n":3})");
  application.completeAction(next.number, "three");
  EXPECT_EQ(json::parse(bridge.readLine()).at("id"), 3);
}

TEST_F(TheBridge, AnswersNothingToWhatWasCancelledButWaitsForItsEnd) {
  TestApplication application(runtime);
  application.setAction("play");
  Process bridge = startBridge();
  call(bridge, 1, "test_play", {{"n", 1}});
  const Received first = application.awaitRequest();
  bridge.writeLine(
      R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":1}})");
  ask(bridge, "seen", "ping");
  EXPECT_EQ(json::parse(bridge.readLine()).at("id"), "seen");
  call(bridge, 2, "test_play", {{"n", 2}});
  EXPECT_EQ(application.completeAction(first.number, "one"), 0);

  const Received second = application.awaitRequest();
  application.completeAction(second.number, "two");
  const json answer = json::parse(bridge.readLine());
  EXPECT_EQ(answer.at("id"), 2);
  EXPECT_EQ(textOf(answer), "two");
}

TEST_F(TheBridge, LosesDoublesAndMixesUpNothingInBursts) {
  constexpr int kBursts = 20;
  constexpr int kCalls = 50;
  TestApplication application(runtime);
  application.setAction("play");
  application.answerAtOnce("done");
  Process bridge = startBridge();
  std::map<int, int> answers;
  for (int burst = 0; burst < kBursts; ++burst) {
    for (int number = 1; number <= kCalls; ++number) {
      call(bridge, burst * kCalls + number, "test_play", {{"n", number}});
    }
    int executed = 0;
    for (int number = 0; number < kCalls; ++number) {
      const json answer = json::parse(bridge.readLine());
      ++answers[answer.at("id").get<int>()];
      const std::string text = textOf(answer);
      EXPECT_TRUE(text == "done" || text.find("safe to retry") != std::string::npos) << text;
      executed += text == "done" ? 1 : 0;
    }
    EXPECT_GE(executed, 9) << "one runs and eight wait";
  }

  EXPECT_EQ(answers.size(), static_cast<std::size_t>(kBursts * kCalls));
  for (const auto &[id, count] : answers) {
    EXPECT_EQ(count, 1) << id;
  }
}

TEST_F(TheBridge, TellsTheClientWhenTheDeclarationsChange) {
  Process bridge = startBridge();
  declare(R"({"version": 1, "actions": []})");

  EXPECT_EQ(json::parse(bridge.readLine()).at("method"), "notifications/tools/list_changed");
  bridge.readLine();
  bridge.readLine();
  ask(bridge, 1, "tools/list");
  EXPECT_EQ(json::parse(bridge.readLine()).at("result").at("tools").size(), 1U);
}

TEST_F(TheBridge, EndsWithItsInput) {
  Process bridge = startBridge();
  const Outcome outcome = bridge.finish();

  EXPECT_EQ(outcome.status, 0);
}

TEST_F(TheBridge, EndsWithTheStatusOfASignal) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    Process bridge = startBridge();
    bridge.signal(number);

    EXPECT_EQ(bridge.wait(), 128 + number);
  }
}

TEST_F(TheBridge, LetsTheCallInProgressFinishAfterItsInputHasEnded) {
  TestApplication application(runtime);
  application.setAction("play");
  Process bridge = startBridge();
  call(bridge, 1, "test_play");
  const Received request = application.awaitRequest();
  bridge.closeInput();
  application.completeAction(request.number, "done");

  EXPECT_EQ(textOf(json::parse(bridge.readLine())), "done");
  EXPECT_EQ(bridge.wait(), 0);
}

TEST_F(TheBridge, ReadsItsInputFromAFileToo) {
  const std::string path =
      runtime.write("lines", "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"ping\"}\n");
  const Outcome outcome =
      Process({"sh", "-c", std::string(ASSISTANT_COMMAND) + " mcp org.example.test <" + path})
          .finish();

  EXPECT_EQ(outcome.out, "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":{}}\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(TheBridge, WritesNothingButMessagesToStandardOutput) {
  Process bridge = startBridge();
  bridge.writeLine("garbage");
  call(bridge, 1, "test_play");
  ask(bridge, 2, "no/such");
  const Outcome outcome = bridge.finish();

  std::istringstream lines(outcome.out);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(json::parse(line).at("jsonrpc"), "2.0");
  }
  EXPECT_EQ(count, 3);
}

} // namespace
} // namespace integration
