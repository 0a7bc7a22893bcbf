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

Ending record(const RecordOptions &options, const Console &console) {
  constexpr int kPause = 100;
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
  // What happened before the signal may still be on its way.
  for (bool isLast = false; !watch->hasEnded() && !isLast;) {
    isLast = signals.haveCome();
    for (const trace::Event &event : watch->read(kPause)) {
      recorder.see(event);
    }
  }
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
