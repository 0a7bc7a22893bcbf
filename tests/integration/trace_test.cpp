// SPDX-License-Identifier: Apache-2.0
//
// What norix-assistant shows of an application that it launched: --trace, monitor, --wait and
// --stop.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr const char *kWatchedId = "org.example.watched";
constexpr int kNotLaunched = 3;

class AWatchedApplication : public IntegrationTest {
protected:
  AWatchedApplication() {
    runtime.install(kWatchedId, "1.0-beta");
    const auto folder =
        runtime.write(std::string("apps/") + kWatchedId + "/marker", "").parent_path();
    std::filesystem::create_symlink(MISTAKEN_APPLICATION, folder / "app");
  }
  ~AWatchedApplication() override { (void)runAssistant({"launch", "--stop", kWatchedId}); }

  static std::string leaveRunning(const std::vector<std::string> &arguments = {}) {
    std::vector<std::string> command = {"launch", "--wait", kWatchedId, "--"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runAssistant(command, {{"DLOG_FILTER", "*:S"}});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
};

TEST_F(AWatchedApplication, IsLeftRunningOnceItListens) {
  EXPECT_THAT(leaveRunning(), ContainsRegex("^org.example.watched listens, process [0-9]+, log /"));

  EXPECT_EQ(runAssistant({"state", kWatchedId}).out, "ready\n");
}

// Asking for its state would start it again: the platform launches whom a proxy connects to.
TEST_F(AWatchedApplication, IsStopped) {
  const std::string left = leaveRunning();
  const pid_t application = std::stoi(left.substr(left.find("process ") + 8));
  ASSERT_EQ(kill(application, 0), 0);

  EXPECT_EQ(runAssistant({"launch", "--stop", kWatchedId}).status, 0);
  EXPECT_NE(kill(application, 0), 0);
  EXPECT_EQ(runAssistant({"launch", "--stop", kWatchedId}).status, kNotLaunched);
}

TEST_F(AWatchedApplication, IsNotLeftRunningTwice) {
  leaveRunning();

  const Outcome outcome = runAssistant({"launch", "--wait", kWatchedId});

  EXPECT_EQ(outcome.status, kCannotLaunch);
  EXPECT_THAT(outcome.err, HasSubstr("launch --stop org.example.watched"));
}

TEST_F(AWatchedApplication, ThatDoesNotListenIsAFailedStart) {
  runtime.install(kWatchedId, std::nullopt);

  const Outcome outcome = runAssistant({"launch", "--wait", kWatchedId});

  EXPECT_EQ(outcome.status, kCannotLaunch);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("ended before it listened"), HasSubstr("finding no-metadata-key")));
}

TEST_F(AWatchedApplication, IsTracedOnBothSidesInOrder) {
  leaveRunning();

  const Outcome outcome = runAssistant({"run", "--trace", kWatchedId, "act"});

  EXPECT_EQ(outcome.out, "done\n");
  std::size_t at = 0;
  for (const char *step :
       {"connecting", "registering for answers", "sending request", "for act {} was received",
        "callback of act was entered", "answered \"done\"", "callback of act returned"}) {
    const std::size_t found = outcome.err.find(step, at);
    ASSERT_NE(found, std::string::npos) << step << " is not in its place in\n" << outcome.err;
    at = found;
  }
  EXPECT_THAT(outcome.err, HasSubstr("received the answer: done"));
}

TEST_F(AWatchedApplication, IsTracedUntilItAnswersLate) {
  leaveRunning({"answers-too-late"});

  const Outcome outcome = runAssistant({"run", "--trace", kWatchedId, "act"});

  EXPECT_THAT(outcome.err, AllOf(HasSubstr("without an answer; the library waits until"),
                                 HasSubstr("answered \"done\"")));
}

TEST_F(AWatchedApplication, SaysWhatItSawWhenTheTimeIsUp) {
  leaveRunning({"never-answers"});

  const Outcome outcome = runAssistant({"run", "--trace", "--timeout", "1", kWatchedId, "act"});

  EXPECT_NE(outcome.status, 0);
  EXPECT_THAT(outcome.err, HasSubstr("callback of act returned after"));
}

TEST_F(AWatchedApplication, IsTracedAsJson) {
  leaveRunning();

  const json outcome =
      json::parse(runAssistant({"run", "--json", "--trace", kWatchedId, "act"}).out);

  const json &trace = outcome.at("trace");
  EXPECT_EQ(trace.at(0).at("says"), "connecting");
  EXPECT_TRUE(std::any_of(trace.begin(), trace.end(), [](const json &event) {
    return event.at("event") == "callback-entered" && event.at("action") == "act";
  }));
}

TEST_F(AWatchedApplication, ThatNobodyLaunchedHasOneSideOnly) {
  Process application({MISTAKEN_APPLICATION}, {{"AUL_APPID", kWatchedId}, {"DLOG_FILTER", "*:S"}});

  const Outcome outcome = runAssistant({"run", "--trace", "--wait", "10", kWatchedId, "act"});

  EXPECT_EQ(outcome.out, "done\n");
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("sending request"),
                                 HasSubstr("the application's side is missing here")));
}

TEST_F(AWatchedApplication, IsMonitoredUntilItEnds) {
  leaveRunning();
  Process monitor = startAssistant({"monitor", kWatchedId});
  EXPECT_THAT(monitor.readLine(), HasSubstr("org.example.watched is process"));
  runAssistant({"run", kWatchedId, "act"});
  runAssistant({"launch", "--stop", kWatchedId});

  const std::string shown = monitor.readAll();

  EXPECT_EQ(monitor.wait(), 0);
  EXPECT_THAT(shown, AllOf(HasSubstr("callback of act was entered"), HasSubstr("answered \"done\""),
                           HasSubstr("exits with status 0")));
}

TEST_F(AWatchedApplication, IsMonitoredWithItsFindingsAsJson) {
  leaveRunning({"answers-twice"});
  Process monitor = startAssistant({"monitor", "--json", kWatchedId});
  EXPECT_EQ(json::parse(monitor.readLine()).at("registered"), json({"act", "getAppContext"}));
  runAssistant({"run", kWatchedId, "act"});

  json event = json::parse(monitor.readLine());
  while (event.at("event") != "finding") {
    event = json::parse(monitor.readLine());
  }
  EXPECT_EQ(event.at("finding"), "answered-twice");
}

TEST_F(AWatchedApplication, CannotReachTheTerminalThroughATrace) {
  leaveRunning();

  const Outcome outcome =
      runAssistant({"run", "--trace", kWatchedId, "act", "--params", "\x1b[31mred\x07"});

  EXPECT_THAT(outcome.err, AllOf(HasSubstr("\\e[31mred\\x07"), Not(HasSubstr("\x1b"))));
}

TEST_F(AWatchedApplication, ThatWasNotLaunchedCannotBeMonitored) {
  EXPECT_EQ(runAssistant({"monitor", kWatchedId}).status, kNotLaunched);
}

TEST_F(AWatchedApplication, EndsWithLaunch) {
  Process launch = startAssistant({"launch", "--json", kWatchedId}, {{"DLOG_FILTER", "*:S"}});
  const pid_t application = json::parse(launch.readLine()).at("pid");
  ASSERT_EQ(kill(application, 0), 0);

  launch.signal(SIGTERM);
  launch.wait();

  EXPECT_NE(kill(application, 0), 0);
}

} // namespace
} // namespace integration
