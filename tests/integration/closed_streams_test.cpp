// SPDX-License-Identifier: Apache-2.0
//
// An application and norix-assistant, started without some of their standard streams.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/examples.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace integration {
namespace {

constexpr const char *kState = "{\"light\":\"off\"}\n";
constexpr int kInternal = 9;

// Bit n of the parameter says that descriptor n is closed.
class WithoutStreams : public IntegrationTest, public testing::WithParamInterface<int> {
protected:
  static bool isClosed(int stream) { return (GetParam() >> stream & 1) != 0; }

  // Lets a shell close what the parameter names.
  static Process start(const std::vector<std::string> &command) {
    std::string script = "exec \"$0\" \"$@\"";
    for (int stream = 0; stream < 3; ++stream) {
      script += isClosed(stream) ? " " + std::to_string(stream) + ">&-" : "";
    }
    std::vector<std::string> shell{"/bin/sh", "-c", script};
    shell.insert(shell.end(), command.begin(), command.end());
    return Process(shell, {{"DLOG_FILTER", ""}}); // every line is written
  }

  // Whether a descriptor of a process is neither a socket nor a pipe nor anything else of its own.
  static bool isPlaceholder(const Process &process, int descriptor) {
    return std::filesystem::read_symlink("/proc/" + std::to_string(process.pid()) + "/fd/"
                                         + std::to_string(descriptor))
           == "/dev/null";
  }

  // An application without standard output cannot say when it is ready: until then nobody listens,
  // or somebody who does not accept yet.
  static Outcome askUntilThere() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(kBound);
    Outcome outcome = runAssistant({"state", kLight});
    while (outcome.status != 0 && std::chrono::steady_clock::now() < end) {
      outcome = runAssistant({"state", kLight});
    }
    return outcome;
  }
};

class AnApplication : public WithoutStreams {};
class TheAssistant : public WithoutStreams {};

INSTANTIATE_TEST_SUITE_P(WithoutStreams, AnApplication, testing::Range(0, 8));
INSTANTIATE_TEST_SUITE_P(WithoutStreams, TheAssistant, testing::Range(0, 8));

TEST_P(AnApplication, AnswersEachRequestAndEndsWhenItIsTerminated) {
  Process light = start({ASSISTANT_COMMAND, "launch", LIGHT_EXAMPLE});

  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(askUntilThere().out, kState);
  }
  for (int stream = 0; stream < 3; ++stream) {
    EXPECT_TRUE(!isClosed(stream) || isPlaceholder(light, stream)) << stream;
  }
  light.signal(SIGTERM);

  EXPECT_EQ(light.wait(), 0);
}

TEST_P(TheAssistant, PrintsTheAnswerOrFails) {
  const Process light = startAssistant({"launch", LIGHT_EXAMPLE});
  askUntilThere();

  const Outcome outcome = finish(start({ASSISTANT_COMMAND, "state", kLight}));

  EXPECT_EQ(outcome.status, isClosed(1) ? kInternal : 0);
  EXPECT_EQ(outcome.out, isClosed(1) ? "" : kState);
  if (isClosed(1) && !isClosed(2)) {
    EXPECT_THAT(outcome.err, testing::HasSubstr("cannot write the answer to standard output"));
  }
}

} // namespace
} // namespace integration
