// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/declared.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/cli/saveText.h"
#include "assistant/launch/Watch.h"
#include "assistant/scenario/Recorder.h"

#include <csignal>
#include <ctime>
#include <memory>
#include <vector>

namespace norix::assistant::cli {
namespace {

struct RecordOptions {
  std::string file;
  std::string appId;
};

/// Has SIGINT, SIGTERM and SIGHUP end the recording and not the process.
class EndSignals {
public:
  EndSignals() {
    sigemptyset(&_signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      sigaddset(&_signals, signal);
    }
    sigprocmask(SIG_BLOCK, &_signals, &_before);
  }
  ~EndSignals() { sigprocmask(SIG_SETMASK, &_before, nullptr); }
  EndSignals(const EndSignals &) = delete;
  EndSignals &operator=(const EndSignals &) = delete;

  bool haveCome() const {
    const timespec now = {0, 0};
    return sigtimedwait(&_signals, nullptr, &now) > 0;
  }

private:
  sigset_t _signals = {};
  sigset_t _before = {};
};

/// Takes in what the application does, until it ends or the recording is interrupted.
void recordUntilTheEnd(launch::Watch &watch, const EndSignals &signals,
                       scenario::Recorder &recorder) {
  constexpr int kPause = 100;
  // What happened before the signal may still be on its way. A busy application has no pause.
  constexpr int kReadsAfterSignal = 10;
  int readsLeft = kReadsAfterSignal;
  bool isInterrupted = false;
  while (!watch.hasEnded() && readsLeft > 0) {
    isInterrupted = isInterrupted || signals.haveCome();
    const std::vector<trace::Event> events = watch.read(kPause);
    for (const trace::Event &event : events) {
      recorder.see(event);
    }
    if (isInterrupted) {
      readsLeft = events.empty() ? 0 : readsLeft - 1;
    }
  }
}

Ending record(const RecordOptions &options, const Console &console) {
  Ending ending;
  ending.subject.app = options.appId;
  std::optional<launch::Watch> watch = launch::Watch::open(options.appId);
  if (!watch) {
    ending.outcome = Outcome::NotLaunched;
    return ending;
  }
  const auto folder = findApplicationFolder(options.appId);
  const EndSignals signals;
  console.say("recording what '" + options.appId + "' does, until it ends or Ctrl-C is pressed");
  scenario::Recorder recorder;
  recordUntilTheEnd(*watch, signals, recorder);
  saveText(options.file, recorder.write(folder ? folder->string() : ""));
  ending.text = options.file + ": " + std::to_string(recorder.requests()) + " requests";
  ending.facts = {{"file", options.file}, {"requests", recorder.requests()}};
  return ending;
}

} // namespace

void addRecord(Program &program) {
  auto options = std::make_shared<RecordOptions>();
  CLI::App &command =
      program.add("record", "Writes what a launched application is asked and answers as a scenario",
                  {"norix-assistant record music.yaml org.example.music"},
                  [options](Console &console) { return record(*options, console); });
  command.add_option("FILE", options->file, "The scenario to write")->required();
  command.add_option("APP", options->appId, "The id of an application that launch has started")
      ->required()
      ->check(checkAppId, "");
}

} // namespace norix::assistant::cli
