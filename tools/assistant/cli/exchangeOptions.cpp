// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/exchangeOptions.h"

#include "assistant/trace/visible.h"

#include <algorithm>

namespace norix::assistant::cli {
namespace {

// Beyond a day somebody has confused the unit.
constexpr double kShortest = 0.001;
constexpr double kLongest = 86400.0;

// As long as the name of a folder may be.
constexpr size_t kLongestId = 255;

} // namespace

std::string checkAppId(const std::string &id) {
  const std::string shown = "'" + trace::visible(id).substr(0, kLongestId) + "' is no app id: ";
  if (id.empty()) {
    return shown + "it is empty";
  }
  if (id.size() > kLongestId) {
    return shown + "it is longer than 255 bytes";
  }
  if (id == "." || id == ".." || id.find('/') != std::string::npos) {
    return shown + "it would name a folder";
  }
  return trace::visible(id) == id ? "" : shown + "it has control characters, or is not UTF-8";
}

// Written so that what is no number, as "nan", is refused as well.
std::string checkSeconds(const std::string &text) {
  double seconds = 0.0;
  const bool isNumber = CLI::detail::lexical_cast(text, seconds);
  return isNumber && seconds >= kShortest && seconds <= kLongest
             ? std::string()
             : "'" + trace::visible(text) + "' is no time; give seconds, from 0.001 to 86400";
}

void addExchangeOptions(CLI::App &command, ExchangeOptions &options) {
  command.add_option("APP", options.appId, "The application's id")
      ->required()
      ->check(checkAppId, "");
  for (const char *name : {"--timeout", "--deadline"}) {
    const bool isOldName = name[2] == 'd';
    command
        .add_option(name, options.timeout,
                    isOldName ? "Another name of --timeout"
                              : "How long everything may take; by default 32 for the exchange "
                                "itself")
        ->type_name("SECONDS")
        ->check(checkSeconds, "");
  }
  command.add_option("--wait", options.wait, "How long to wait until the application listens")
      ->type_name("SECONDS")
      ->check(checkSeconds, "");
  command.add_option("--id", options.senderId, "The app id to send as")
      ->type_name("APPID")
      ->check(checkAppId, "")
      ->capture_default_str();
  command.add_flag("--trace", options.traces,
                   "Shows, on standard error, what happened when on both sides");
  command.add_option("--set", options.keys, "A further text in the bundle of the request")
      ->type_name("KEY=VALUE")
      ->take_all()
      ->expected(1);
}

} // namespace norix::assistant::cli
