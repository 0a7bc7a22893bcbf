// SPDX-License-Identifier: Apache-2.0
#include "support/AppFolder.h"

#include <app.h>
#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <ostream>
#include <service_app.h>
#include <string>
#include <vector>

namespace {

using testing::Test;
using testing::TestWithParam;
using testing::Values;

constexpr const char *kNothingLeft = "XDG_RUNTIME_DIR unset\necore 0\n";

std::vector<std::string> joined(const std::string &kind, std::vector<std::string> behaviour) {
  behaviour.insert(behaviour.begin(), kind);
  return behaviour;
}

/** @brief The application that prints the stations of its life, in a folder with a manifest. */
class Stations {
public:
  Stations() { _folder.write("tizen-manifest.xml", kMusicManifest); }

  Outcome run(const std::string &kind, const std::vector<std::string> &behaviour,
              const std::vector<std::string> &environment = {}) const {
    return ::run(_program, joined(kind, behaviour), environment);
  }

  const std::string &program() const { return _program; }

private:
  const AppFolder _folder;
  const std::string _program = _folder.putStations("bin/music");
};

bool neverCreated(void * /*userData*/) {
  ADD_FAILURE() << "created";
  return false;
}

TEST(AServiceApplication, IsCreatedLaunchedRunAndTerminated) {
  const Outcome outcome = Stations().run("service", {"timer=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nterminate\nmain 0\n") + kNothingLeft);
  EXPECT_EQ(outcome.status, EXIT_SUCCESS);
}

TEST(AServiceApplication, NeedsNoCallbackButCreate) {
  const Outcome outcome = Stations().run("service", {"only-create", "timer=exit"});

  EXPECT_EQ(outcome.out, std::string("create\nloop\nmain 0\n") + kNothingLeft);
}

TEST(AUiApplication, IsResumedAfterItsLaunchAndPausedBeforeItsEnd) {
  const Outcome outcome = Stations().run("ui", {"timer=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nresume\nloop\npause\nterminate\nmain 0\n")
                             + kNothingLeft);
}

TEST(AUiApplication, ThatWasNotLaunchedIsNotPaused) {
  const Outcome outcome = Stations().run("ui", {"create=exit"});

  EXPECT_EQ(outcome.out, std::string("create\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, ThatIsNotCreatedIsNotTerminatedEither) {
  const Outcome outcome = Stations().run("service", {"create=false"});

  EXPECT_EQ(outcome.out, std::string("create\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, ThatIsNotCreatedSaysSoInTheLog) {
  const Outcome outcome = Stations().run("service", {"create=false"});

  EXPECT_THAT(outcome.err, testing::HasSubstr("the create callback returned false"));
}

TEST(AnApplication, ThatExitsInCreateIsTerminatedWithoutALaunch) {
  const Outcome outcome = Stations().run("service", {"create=exit"});

  EXPECT_EQ(outcome.out, std::string("create\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, ThatExitsInItsLaunchIsTerminatedWithoutALoop) {
  const Outcome outcome = Stations().run("service", {"control=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, RunsThoughItExitedBeforeItRan) {
  const Outcome outcome = Stations().run("service", {"before=exit", "timer=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, MayExitOnceMoreAtItsEnd) {
  const Outcome outcome = Stations().run("service", {"timer=exit", "terminate=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, MayExitOnAnotherThread) {
  const Outcome outcome = Stations().run("service", {"timer=exit-in-thread"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nterminate\nmain 0\n") + kNothingLeft);
}

TEST(AnApplication, RunsOnceAtATime) {
  const Outcome outcome = Stations().run("service", {"timer=main", "timer=exit"});

  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nnested main -114\nterminate\nmain 0\n")
                             + kNothingLeft);
}

TEST(AnApplication, MayRunAgain) {
  const Outcome outcome = Stations().run("service", {"timer=exit", "again"});

  const std::string once = "create\ncontrol\nloop\nterminate\nmain 0\n";
  EXPECT_EQ(outcome.out, once + once + kNothingLeft);
}

TEST(AnApplication, RunsAgainAfterItExitedInCreate) {
  const Outcome outcome = Stations().run("service", {"create=exit", "again"});

  const std::string once = "create\nterminate\nmain 0\n";
  EXPECT_EQ(outcome.out, once + once + kNothingLeft);
}

TEST(AnApplication, WithoutAnIdIsNotCreated) {
  const AppFolder folder;

  const Outcome outcome = run(folder.putStations("music"), {"service"});

  EXPECT_EQ(outcome.out, std::string("main -1\n") + kNothingLeft);
}

TEST(AnApplication, LeavesNoEcoreBehind) {
  const Outcome outcome = Stations().run("service", {"timer=exit", "count"});

  EXPECT_THAT(outcome.out, testing::EndsWith("ecore 1\n"));
}

class AnExceptionOf : public TestWithParam<const char *> {};

TEST_P(AnExceptionOf, PassesThroughMainAndLeavesNoEcoreBehind) {
  const std::string station = GetParam();

  // An exception that crosses Ecore's loop costs EFL the memory of its loop object.
  const Outcome outcome = Stations().run("service", {station + "=throw", "timer=exit", "count"},
                                         {"ASAN_OPTIONS=detect_leaks=0"});

  // Of an exception that crosses Ecore's loop, the ports of the application may learn too late to
  // let go of Ecore.
  const std::string end = station == "timer" ? "" : "1\n";
  EXPECT_THAT(outcome.out,
              testing::HasSubstr("thrown by " + station + "\nXDG_RUNTIME_DIR unset\necore " + end));
  EXPECT_EQ(outcome.err, "");
}

TEST_P(AnExceptionOf, DoesNotKeepTheApplicationFromRunningAgain) {
  const std::string station = GetParam();

  const Outcome outcome = Stations().run("service", {station + "=throw", "timer=exit", "again"},
                                         {"ASAN_OPTIONS=detect_leaks=0"});

  const std::size_t half = outcome.out.find("thrown by");
  ASSERT_NE(half, std::string::npos);
  const std::string once = outcome.out.substr(0, outcome.out.find('\n', half) + 1);
  EXPECT_EQ(outcome.out, once + once + kNothingLeft);
}

INSTANTIATE_TEST_SUITE_P(, AnExceptionOf, Values("create", "control", "timer", "terminate"),
                         [](const auto &row) { return std::string(row.param); });

struct EndingSignal {
  const char *name;
  int number;
};

void PrintTo(const EndingSignal &row, std::ostream *out) {
  *out << row.name;
}

class AnEndingSignal : public TestWithParam<EndingSignal> {};

TEST_P(AnEndingSignal, EndsTheLoopAndTerminatesTheApplication) {
  const Stations stations;
  Process child = Process::withVariables({stations.program(), "service"}, {});
  child.awaitLine("loop");

  child.signal(GetParam().number);

  const Outcome outcome = child.finish();
  EXPECT_EQ(outcome.out, std::string("create\ncontrol\nloop\nterminate\nmain 0\n") + kNothingLeft);
  EXPECT_EQ(outcome.status, EXIT_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(, AnEndingSignal,
                         Values(EndingSignal{"SIGTERM", SIGTERM}, EndingSignal{"SIGINT", SIGINT},
                                EndingSignal{"SIGQUIT", SIGQUIT}),
                         [](const auto &row) { return std::string(row.param.name); });

struct Surroundings {
  const char *name;
  std::vector<std::string> environment;
};

void PrintTo(const Surroundings &row, std::ostream *out) {
  *out << row.name;
}

class PoorSurroundings : public TestWithParam<Surroundings> {};

TEST_P(PoorSurroundings, KeepNoApplicationFromRunningQuietly) {
  const Outcome outcome = Stations().run("service", {"timer=exit"}, GetParam().environment);

  EXPECT_EQ(outcome.status, EXIT_SUCCESS);
  EXPECT_EQ(outcome.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    , PoorSurroundings,
    Values(Surroundings{"WithoutAnyVariable", {}},
           Surroundings{"WithAHomeThatDoesNotExist", {"HOME=/proc/no/home"}},
           Surroundings{"WithAnEmptyHome", {"HOME="}},
           Surroundings{"WithARuntimeFolderThatDoesNotExist",
                        {"HOME=/proc/no/home", "XDG_RUNTIME_DIR=/proc/no/runtime"}},
           Surroundings{"WithAnEmptyRuntimeFolder", {"HOME=/proc/no/home", "XDG_RUNTIME_DIR="}}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(ARuntimeFolder, IsLeftAsItWas) {
  const Outcome outcome =
      Stations().run("service", {"timer=exit"}, {"XDG_RUNTIME_DIR=/proc/no/runtime"});

  EXPECT_THAT(outcome.out, testing::HasSubstr("XDG_RUNTIME_DIR /proc/no/runtime\n"));
}

TEST(AServiceMain, NeedsItsArguments) {
  char name[] = "name";
  char *arguments[] = {name, nullptr};
  service_app_lifecycle_callback_s callbacks = {neverCreated, nullptr, nullptr};
  service_app_lifecycle_callback_s noCreate = {};

  EXPECT_EQ(service_app_main(0, arguments, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(service_app_main(1, nullptr, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(service_app_main(1, arguments, nullptr, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(service_app_main(1, arguments, &noCreate, nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(AUiMain, NeedsItsArguments) {
  char name[] = "name";
  char *arguments[] = {name, nullptr};
  ui_app_lifecycle_callback_s callbacks = {neverCreated, nullptr, nullptr, nullptr, nullptr};
  ui_app_lifecycle_callback_s noCreate = {};

  EXPECT_EQ(ui_app_main(0, arguments, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ui_app_main(1, nullptr, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ui_app_main(1, arguments, nullptr, nullptr), APP_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ui_app_main(1, arguments, &noCreate, nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(AnApplicationInC, RunsWithAndWithoutAWindow) {
  const AppFolder folder;
  folder.write("tizen-manifest.xml", kMusicManifest);

  EXPECT_EQ(folder.ask("ui").out, "0\n");
  EXPECT_EQ(folder.ask("service").out, "0\n");
}

} // namespace
