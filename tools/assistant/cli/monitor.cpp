// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/launch/Watch.h"
#include "assistant/trace/Timeline.h"

#include <memory>

namespace norix::assistant::cli {
namespace {

using launch::Watch;

bool show(const trace::Event &event, trace::Timeline &timeline, const Console &console) {
  if (console.isJson()) {
    return console.print(Json(event.members));
  }
  const std::optional<std::string> line = timeline.line(event);
  return !line || console.print(*line);
}

// Until the application ends; Ctrl-C ends this process as any other.
Ending monitor(const std::string &appId, const Console &console) {
  Ending ending;
  ending.subject.app = appId;
  std::optional<Watch> watch = Watch::open(appId);
  if (!watch) {
    ending.outcome = Outcome::NotLaunched;
    return ending;
  }
  trace::Timeline timeline;
  while (!watch->hasEnded()) {
    for (const trace::Event &event : watch->read(-1)) {
      if (!show(event, timeline, console)) {
        throw std::runtime_error("cannot write to standard output");
      }
    }
  }
  ending.status = 0;
  return ending;
}

} // namespace

void addMonitor(Program &program) {
  auto appId = std::make_shared<std::string>();
  CLI::App &command = program.add(
      "monitor", "Shows what happens in an application that was launched, until it ends",
      {"norix-assistant monitor org.example.music",
       "norix-assistant monitor org.example.music --json | jq 'select(.event == \"finding\")'"},
      [appId](Console &console) { return monitor(*appId, console); });
  command.add_option("APP", *appId, "The application's id")->required()->check(checkAppId, "");
}

} // namespace norix::assistant::cli
