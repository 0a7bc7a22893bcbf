// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/logTexts.h"

#include <array>
#include <string_view>

namespace norix::assistant::trace {
namespace {

struct KnownText {
  LogKind kind;
  std::string_view before;
  // The detail stands between the two; without an `after` it goes to the end.
  std::string_view after;
  bool hasDetail;
};

constexpr std::array<KnownText, 13> kTexts = {{
    {LogKind::Connected, "Call stub CreateService Sender:", "", true},
    {LogKind::Sender, "Call stub Sender ", "", true},
    {LogKind::SetCallback, "Call stub SetCB", "", false},
    {LogKind::Disconnected, "Call stub OnTerminate", "", false},
    {LogKind::AllowList, "res_path : ", "", true},
    {LogKind::NotPermitted, "", " is not permitted app id", true},
    {LogKind::Parked,
     "There is no matching action execution callback, waiting for sometime to see if reg can "
     "happen",
     "", false},
    {LogKind::NotRegistered, "There is no matching action execution callback.", "", false},
    {LogKind::NotRegistered, "There is no app state request callback.", "", false},
    {LogKind::TimedOut, "action execution timed out. Failed to execute action.", "", false},
    {LogKind::TimedOut, "App state request execution timed out. Failed to execute action.", "",
     false},
    {LogKind::NotDelivered, "response error: NotConnectedSocketException", "", false},
    {LogKind::NotDelivered, "response error: InvalidCallbackException", "", false},
}};

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool matches(const KnownText &known, std::string_view text) {
  if (!known.hasDetail) {
    return text == known.before;
  }
  return text.size() > known.before.size() + known.after.size()
         && text.substr(0, known.before.size()) == known.before && endsWith(text, known.after);
}

} // namespace

LogMeaning meaningOf(const Event &log) {
  // The lines of these two functions quote the application's answer, which may say anything.
  const std::string function = log.text("function");
  if (!isLibrarysOwn(log) || function == "completeActionExecution"
      || function == "completeAppStateRequest") {
    return {};
  }
  const std::string text = log.text("text");
  for (const KnownText &known : kTexts) {
    if (matches(known, text)) {
      const std::size_t length = text.size() - known.before.size() - known.after.size();
      return {known.kind, text.substr(known.before.size(), length)};
    }
  }
  return {};
}

bool isLibrarysOwn(const Event &log) {
  const std::string tag = log.text("tag");
  return (tag == "NORIX-APPSDK" || tag == "RPC_PORT_STUB") && log.has("function");
}

} // namespace norix::assistant::trace
