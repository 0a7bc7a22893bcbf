// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Exchange.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/declared.h"
#include "assistant/cli/parameters.h"

#include <memory>

namespace norix::assistant::cli {
namespace {

struct RunOptions {
  ExchangeOptions exchange;
  std::string actionId;
  std::string actionType;
  std::vector<std::string> pairs;
  std::optional<std::string> params;
};

std::string paramsOf(const RunOptions &options) {
  if (!options.params) {
    return toJsonObject(options.pairs);
  }
  if (!options.pairs.empty()) {
    throw UsageError("give either --params or KEY=VALUE pairs, not both");
  }
  return readParams(*options.params);
}

Ending run(const RunOptions &options, Console &console) {
  Request request = actionRequest(options.actionId, paramsOf(options));
  request.actionType = options.actionType;
  warnOfParameters(options.exchange.appId, request, console);
  return exchange(options.exchange, std::move(request), console);
}

} // namespace

void addRun(Program &program) {
  auto options = std::make_shared<RunOptions>();
  CLI::App &command =
      program.add("run", "Has an application execute an action",
                  {"norix-assistant run org.example.light lightOn",
                   "norix-assistant run org.example.music musicVolume volume=40",
                   "norix-assistant run org.example.music musicVolume --params '{\"volume\":40}'"},
                  [options](Console &console) { return run(*options, console); });
  addExchangeOptions(command, options->exchange);
  command.add_option("ACTION", options->actionId, "The id of the action")->required();
  // Newer versions of CLI11 refuse a name with "=" in it.
  command
      .add_option("PARAMETER", options->pairs,
                  "Sent as one JSON object; a value that is a JSON number, true, "
                  "false or null stays so, any other is a string. KEY:=JSON takes any JSON")
      ->type_name("KEY=VALUE");
  command
      .add_option("--params", options->params,
                  "The parameters, sent as they are; from a file with @FILE, from standard input "
                  "with -")
      ->type_name("TEXT");
  command.add_option("--type", options->actionType, "The type of the action")->type_name("TEXT");
}

} // namespace norix::assistant::cli
