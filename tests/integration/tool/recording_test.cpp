// SPDX-License-Identifier: Apache-2.0
//
// norix-assistant record and mcp --record from outside, with the music example.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/examples.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

class TheRecordCommand : public IntegrationTest {
protected:
  // Starts to record the example, and waits until it does.
  static Process startRecording(const std::string &file) {
    Process recording = startAssistant({"record", file, kMusic});
    while (recording.errors().empty()) {
      std::this_thread::yield();
    }
    return recording;
  }
};

/// A way to ask an application for something.
struct Asking {
  const char *name;
  void (*ask)();
};

void PrintTo(const Asking &asking, std::ostream *out) {
  *out << asking.name;
}

const Asking kAskings[] = {
    {"Run",
     [] {
       EXPECT_EQ(runAssistant({"state", kMusic}).status, 0);
       EXPECT_EQ(runAssistant({"run", kMusic, "musicVolume", "volume=30"}).status, 0);
       EXPECT_EQ(runAssistant({"run", kMusic, "musicNext", "--id", "com.example.other"}).status, 0);
     }},
    {"Shell",
     [] {
       Process shell = startAssistant({"shell"});
       shell.writeLine("state org.example.music");
       shell.writeLine("run org.example.music musicVolume volume=30");
       shell.writeLine("run org.example.music musicNext");
       EXPECT_EQ(shell.finish().status, 0);
     }},
    {"AProgramWithTheClientLibrary", [] {
       Session session(kMusic, kBound);
       session.ask(stateRequest(), kBound);
       session.ask(actionRequest("musicVolume", R"({"volume": 30})"), kBound);
       session.ask(actionRequest("musicNext", "{}"), kBound);
     }}};

class ARecordingOfWhatIsAskedBy : public TheRecordCommand,
                                  public testing::WithParamInterface<Asking> {};

TEST_P(ARecordingOfWhatIsAskedBy, PassesWhenItIsPlayed) {
  ASSERT_EQ(runAssistant({"launch", "--wait", MUSIC_EXAMPLE}).status, 0);
  const std::string file = runtime.write("recorded.yaml", "");
  Process recording = startRecording(file);
  GetParam().ask();
  EXPECT_EQ(runAssistant({"launch", "--stop", kMusic}).status, 0);

  ASSERT_EQ(recording.wait(), 0);
  const Outcome replayed = runAssistant({"test", file});

  EXPECT_EQ(replayed.status, 0) << support::contentOf(file) << replayed.out << replayed.err;
  EXPECT_THAT(replayed.out, HasSubstr("5 steps: 5 passed"));
}

INSTANTIATE_TEST_SUITE_P(Either, ARecordingOfWhatIsAskedBy, testing::ValuesIn(kAskings),
                         [](const auto &chosen) { return chosen.param.name; });

TEST_F(TheRecordCommand, GoesOnUntilItIsInterrupted) {
  ASSERT_EQ(runAssistant({"launch", "--wait", MUSIC_EXAMPLE}).status, 0);
  const std::string file = runtime.write("recorded.yaml", "");
  Process recording = startRecording(file);
  EXPECT_EQ(runAssistant({"state", kMusic}).status, 0);

  recording.signal(SIGINT);

  EXPECT_EQ(recording.wait(), 0);
  EXPECT_THAT(support::contentOf(file), HasSubstr("- state:"));
  EXPECT_EQ(runAssistant({"launch", "--stop", kMusic}).status, 0);
}

// What an agent's client sends; the bridge ends with its input.
Process bridgeWith(const std::vector<json> &messages, std::vector<std::string> options) {
  options.insert(options.begin(), {"mcp", MUSIC_EXAMPLE});
  Process bridge = startAssistant(options);
  for (const json &message : messages) {
    bridge.writeLine(message.dump());
    EXPECT_EQ(json::parse(bridge.readLine()).at("id"), message.at("id"));
  }
  return bridge;
}

json requestOf(int id, const std::string &method, const json &params) {
  return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

json callOf(int id, const std::string &tool, const json &arguments = json::object()) {
  return requestOf(id, "tools/call", {{"name", tool}, {"arguments", arguments}});
}

const std::vector<json> kSession = {
    requestOf(0, "initialize",
              {{"protocolVersion", "2025-11-25"}, {"capabilities", json::object()}}),
    callOf(1, "music_musicVolume", {{"volume", 70}}),
    callOf(2, "music_musicVolume", {{"volume", "loud"}}), // Refused: nothing is sent.
    callOf(3, "music_musicNext"),
    callOf(4, "music_state"),
};

TEST_F(TheRecordCommand, PlaysWhatAnAgentDid) {
  const std::string file = runtime.write("agent.yaml", "");

  const Outcome bridge = bridgeWith(kSession, {"--launch", "--record", file}).finish();
  const Outcome played = runAssistant({"test", file, "--json"});

  EXPECT_EQ(bridge.status, 0);
  EXPECT_THAT(bridge.err, HasSubstr("3 requests"));
  EXPECT_EQ(played.status, 0) << support::contentOf(file) << played.out;
  EXPECT_THAT(played.out, AllOf(HasSubstr("musicVolume"), HasSubstr("musicNext")));
}

TEST_F(TheRecordCommand, FailsWhenTheApplicationDoesNotDoWhatItDidForTheAgent) {
  const std::string file = runtime.write("agent.yaml", "");
  bridgeWith(kSession, {"--launch", "--record", file}).finish();
  std::string recorded = support::contentOf(file);
  recorded.replace(recorded.find("The volume is 70"), 16, "The volume is 71");

  EXPECT_EQ(runAssistant({"test", runtime.write("agent.yaml", recorded)}).status, kFailed);
}

TEST_F(TheRecordCommand, RecordsASessionThatASignalEnds) {
  const std::string file = runtime.write("agent.yaml", "");
  Process bridge = bridgeWith(kSession, {"--launch", "--record", file});

  bridge.signal(SIGTERM);
  bridge.wait();

  EXPECT_THAT(support::contentOf(file), HasSubstr("- state:"));
}

TEST_F(TheRecordCommand, LeavesTheFileAloneWhenAnAgentOnlyLooks) {
  const std::string file = runtime.write("agent.yaml", "as it was");

  bridgeWith({kSession.front(), requestOf(1, "tools/list", json::object())}, {"--record", file})
      .finish();

  EXPECT_EQ(support::contentOf(file), "as it was");
}

TEST_F(TheRecordCommand, RecordsOneApplicationOfAnAgent) {
  EXPECT_EQ(runAssistant({"mcp", MUSIC_EXAMPLE, "org.example.b", "--record", "x.yaml"}).status,
            kWrongUsage);
  EXPECT_EQ(runAssistant({"mcp", MUSIC_EXAMPLE, "--record", "/no/such/folder/x.yaml"}).status,
            kWrongUsage);
}

TEST_F(TheRecordCommand, NeedsAnApplicationThatWasLaunched) {
  EXPECT_EQ(runAssistant({"record", "x.yaml", kMusic}).status, 3);
}

} // namespace
} // namespace integration
