// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Outcome.h"

#include "assistant/launch/exitStatus.h"
#include "assistant/trace/visible.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

namespace norix::assistant::cli {
namespace {

constexpr OutcomeRow kRows[] = {
    {Outcome::Answered, 0, "answered", "the application answered; a command did its work", "", ""},
    {Outcome::ActionNotRegistered, 1, "action-not-registered", "the answer is a failure",
     "'{app}': {detail}: '{action}'",
     "The application has to call norix_set_action_execution_cb(\"{action}\", …) right after "
     "norix_initialize(). norix-assistant list --actions shows the ids that it declares."},
    {Outcome::ActionTimedOut, 1, "action-timed-out", "the answer is a failure",
     "'{app}': {detail}: '{action}' was not answered within 30 seconds",
     "Its callback has to call norix_complete_action_execution() with the handle that it got, "
     "inside the callback or later."},
    {Outcome::StateNotRegistered, 1, "state-not-registered", "the answer is a failure",
     "'{app}': {detail}",
     "The application has to call norix_set_app_state_request_cb() right after "
     "norix_initialize()."},
    {Outcome::StateTimedOut, 1, "state-timed-out", "the answer is a failure",
     "'{app}': {detail}: the state request was not answered within 30 seconds",
     "Its callback has to call norix_complete_app_state_request() with the handle that it got, "
     "inside the callback or later."},
    {Outcome::Failed, 1, "failed", "the answer is a failure",
     "'{app}': the {request} failed: {detail}",
     "This text is none of the library's; look at the application's log."},
    {Outcome::WrongUsage, 2, "wrong-usage", "wrong usage", "{detail}",
     "Run with --help for more information."},
    {Outcome::NobodyListens, 3, "nobody-listens", "nobody listens under this id",
     "'{app}': cannot connect: nobody listens under this id; {detail}",
     "Start it: norix-assistant launch FOLDER, or give it time: --wait SECONDS. If it runs, it "
     "must have the same XDG_RUNTIME_DIR and must have called norix_initialize(); "
     "DLOG_FILTER='*:W' shows what the platform has to say."},
    {Outcome::NotLaunched, 3, "not-launched", "nobody listens under this id",
     "'{app}' was not started by norix-assistant launch, or has ended already", ""},
    {Outcome::Refused, 4, "refused", "refused by the allow list",
     "'{app}': refuses '{sender}': its allow list does not name it",
     "Put '{sender}' on a line of its own into the application's allow list, "
     "/usr/share/norix/allow_list.dat, or send as an app id that stands there: --id APPID."},
    {Outcome::NoAnswer, 5, "no-answer", "no answer in time",
     "'{app}': no answer within {seconds} seconds to the {request}",
     "Give more time with --timeout SECONDS; the library itself answers after 30. If that does "
     "not help, the application's main loop stands still: look at what it does."},
    {Outcome::ConnectionLost, 6, "connection-lost", "the application went away",
     "'{app}': the connection ended before the {request} was answered",
     "Look at the application's own output: it ended, or it deinitialised the library."},
    {Outcome::Malformed, 7, "malformed", "the answer is malformed", "{detail}",
     "The application does not speak the protocol of libnorix.so: check what it links."},
    {Outcome::CannotLaunch, 8, "cannot-launch", "cannot launch the application",
     "cannot launch: {lines}", ""},
    {Outcome::Internal, 9, "internal", "anything else", "{detail}", ""},
    {Outcome::Findings, 10, "findings", "something is wrong with the application",
     "'{app}': {detail}", ""},
    {Outcome::Busy, 11, "busy", "the application listens and does not accept",
     "'{app}': listens and does not accept: no connection within {seconds} seconds",
     "Its main loop stands still: it is stopped, it waits inside a callback, or it is starting. "
     "Give more time with --timeout SECONDS."},
    {Outcome::Crowded, 12, "crowded", "other commands held the application for too long",
     "'{app}': other norix-assistant commands have had their turns for {seconds} seconds; the "
     "{request} was not sent",
     "Commands with one sender id take turns. Give more time with --timeout SECONDS, or look "
     "for one that hangs."},
    {Outcome::Superseded, 13, "superseded", "a newer request took the place of this one",
     "'{app}': the {request} is lost: a newer request took its place",
     "The library works on one request at a time, whoever sends it, and answers the latest. "
     "Send again, and have assistants with other ids wait meanwhile."},
    {Outcome::TestsFailed, 14, "tests-failed", "what was tested did not pass", "{detail}", ""},
    {Outcome::FileRefused, 15, "file-refused", "a file cannot be used", "{lines}",
     "norix-scenario(5) says what a scenario may consist of."},
    {Outcome::HungUp, launch::kSignalStatus + SIGHUP, "hung-up", "ended by SIGHUP", "hung up", ""},
    {Outcome::Interrupted, launch::kSignalStatus + SIGINT, "interrupted", "ended by SIGINT",
     "interrupted", ""},
    {Outcome::Terminated, launch::kSignalStatus + SIGTERM, "terminated", "ended by SIGTERM",
     "terminated", ""}};

std::string numberText(double number) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%.6g", number);
  return text.data();
}

} // namespace

std::vector<OutcomeRow> allOutcomes() {
  return {std::begin(kRows), std::end(kRows)};
}

const OutcomeRow &rowOf(Outcome outcome) {
  return *std::find_if(std::begin(kRows), std::end(kRows),
                       [outcome](const OutcomeRow &row) { return row.outcome == outcome; });
}

Outcome outcomeNamed(const std::string &word) {
  const auto *const found =
      std::find_if(std::begin(kRows), std::end(kRows),
                   [&word](const OutcomeRow &row) { return word == row.word; });
  return found == std::end(kRows) ? Outcome::Internal : found->outcome;
}

std::string fill(const char *text, const Subject &subject) {
  const std::array<std::pair<const char *, std::string>, 7> values{
      {{"{app}", trace::visible(subject.app)},
       {"{request}", trace::visible(subject.request)},
       {"{action}", trace::visible(subject.action)},
       {"{sender}", trace::visible(subject.sender)},
       {"{seconds}", numberText(subject.seconds)},
       {"{detail}", trace::visible(subject.detail)},
       {"{lines}", trace::visibleLines(subject.detail)}}};
  std::string filled;
  for (std::string_view rest = text; !rest.empty();) {
    const auto *value = std::find_if(values.begin(), values.end(), [rest](const auto &candidate) {
      return rest.rfind(candidate.first, 0) == 0;
    });
    const bool isPlain = value == values.end();
    filled += isPlain ? std::string(rest.substr(0, 1)) : value->second;
    rest.remove_prefix(isPlain ? 1 : std::string_view(value->first).size());
  }
  return filled;
}

} // namespace norix::assistant::cli
