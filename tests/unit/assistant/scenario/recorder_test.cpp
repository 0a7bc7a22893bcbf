// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Recorder.h"
#include "assistant/scenario/read.h"

#include <gmock/gmock.h>

namespace norix::assistant::scenario {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class ARecording : public testing::Test {
protected:
  void see(const std::string &name, json members) {
    _time += 1000000;
    _recorder.see({name, _time, std::move(members)});
  }
  void ask(const std::string &action, const std::string &params) {
    log("Call stub Sender com.example.phone");
    see("received", {{"action", action}, {"params", params}, {"type", ""}});
  }
  void answer(const std::string &text) {
    see("call", {{"function", "norix_complete_action_execution"}, {"result", 0}, {"text", text}});
  }
  void log(const std::string &text) {
    see("log", {{"tag", "NORIX-APPSDK"}, {"function", "f"}, {"text", text}});
  }
  std::string written() const { return _recorder.write("folder"); }
  // What was written, as it is read.
  Scenario scenario() const { return readScenario("recorded.yaml", written(), {}); }
  // Of the recording so far; valid until the next call.
  const Call &call(std::size_t step) {
    _scenario = scenario();
    return std::get<Ask>(_scenario.steps.at(step).action).call;
  }

private:
  Recorder _recorder;
  Scenario _scenario;
  std::uint64_t _time = 0;
};

TEST_F(ARecording, HasRequestsWithTheirParametersAndAnswers) {
  ask("musicVolume", R"({"volume":40})");
  answer("The \"volume\" is ${40}\n");

  EXPECT_EQ(call(0).action, "musicVolume");
  EXPECT_EQ(call(0).params.dump(), R"({"volume":40})");
  EXPECT_EQ(call(0).expectation.text, "The \"volume\" is $${40}\n");
  EXPECT_EQ(scenario().senders[0].appId, "com.example.phone");
}

TEST_F(ARecording, MakesTimesBounds) {
  ask("a", "{}");
  answer("b");

  EXPECT_GE(call(0).expectation.within, 2.0);
}

TEST_F(ARecording, KeepsParametersThatAreNoJson) {
  ask("a", "not JSON");
  answer("b");

  EXPECT_EQ(call(0).paramsText, "not JSON");
}

TEST_F(ARecording, KeepsDeepJsonAsText) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  ask("a", deep);
  answer(deep);

  EXPECT_EQ(call(0).paramsText, deep);
  EXPECT_EQ(call(0).expectation.text, deep);
}

TEST_F(ARecording, CapturesWhatALaterRequestSends) {
  ask("open", "{}");
  answer(R"({"session":"k4711","ok":true})");
  ask("close", R"({"session":"k4711"})");
  answer("closed");

  EXPECT_EQ(call(0).captures.at(0).pointer, "/session");
  EXPECT_EQ(call(0).expectation.json.size(), 1U);
  const std::string name = call(0).captures.at(0).name;
  EXPECT_EQ(call(1).params["session"], "${" + name + "}");
  EXPECT_THAT(written(), Not(HasSubstr("k4711")));
}

TEST_F(ARecording, KnowsWhatWasReplaced) {
  ask("slow", "{}");
  ask("fast", "{}");
  answer("done");

  const Scenario read = scenario();
  EXPECT_EQ(std::get<Send>(read.steps.at(0).action).call.action, "slow");
  EXPECT_EQ(std::get<Await>(read.steps.at(2).action).expectation.outcome, "superseded");
}

TEST_F(ARecording, KnowsWhatTheLibraryAnswered) {
  ask("a", "{}");
  log("action execution timed out. Failed to execute action.");
  ask("getAppContext", "");
  log("There is no app state request callback.");

  EXPECT_EQ(call(0).expectation.outcome, "action-timed-out");
  EXPECT_EQ(call(1).expectation.outcome, "state-not-registered");
}

TEST_F(ARecording, ExpectsTheMistakesThatWereMade) {
  ask("a", "{}");
  answer("b");
  see("finding", {{"finding", "loop-held"}});

  EXPECT_TRUE(scenario().findings.allowsAll);
}

} // namespace
} // namespace norix::assistant::scenario
