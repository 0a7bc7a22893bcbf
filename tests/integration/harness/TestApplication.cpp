// SPDX-License-Identifier: Apache-2.0
#include "integration/harness/TestApplication.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace integration {
namespace {

using nlohmann::json;

std::string install(const TemporaryRuntime &runtime, const TestApplication::Options &options) {
  runtime.install(options.appId, options.sdkVersion);
  return options.appId;
}

std::vector<std::string> commandFor(const TestApplication::Options &options) {
  std::vector<std::string> command{TEST_APPLICATION};
  if (!options.allowList.empty()) {
    command.push_back(options.allowList);
  }
  return command;
}

Process::Environment environmentFor(const TestApplication::Options &options) {
  Process::Environment environment = options.environment;
  environment["AUL_APPID"] = options.appId;
  return environment;
}

json textOrNull(const std::optional<std::string> &text) {
  return text ? json(*text) : json();
}

} // namespace

TestApplication::TestApplication(const TemporaryRuntime &runtime, const Options &options)
    : _appId(install(runtime, options)), _process(commandFor(options), environmentFor(options)) {}

TestApplication::TestApplication(const TemporaryRuntime &runtime)
    : TestApplication(initialised(runtime, {})) {}

TestApplication TestApplication::initialised(const TemporaryRuntime &runtime,
                                             const Options &options) {
  TestApplication application(runtime, options);
  if (application.initialize() != 0) {
    throw std::runtime_error("the application does not initialise:\n"
                             + application._process.errors());
  }
  return application;
}

int TestApplication::completeState(int request, const std::optional<std::string> &text) {
  return call("completeState", {{"request", request}, {"text", textOrNull(text)}});
}

int TestApplication::completeAction(int request, const std::optional<std::string> &text) {
  return call("completeAction", {{"request", request}, {"text", textOrNull(text)}});
}

std::optional<std::string> TestApplication::actionName(int request) {
  const json name = exchange("actionName", {{"request", request}}).at("name");
  return name.is_null() ? std::nullopt : std::optional<std::string>(name);
}

void TestApplication::setActionWhenParked(const std::string &id, double seconds) {
  call("setActionWhenParked", {{"id", id}, {"seconds", seconds}});
}

Received TestApplication::awaitRequest() {
  const json event = awaitEvent("state", "action");
  Received received;
  received.kind = event.at("event");
  received.number = event.at("request");
  received.handleNumber = event.at("handleNumber");
  received.handleText = event.at("handleText");
  if (received.kind == "action") {
    received.actionId = event.at("actionId");
    received.actionType = event.at("actionType");
    received.actionParams = event.at("actionParams");
    received.texts = event.at("texts").get<std::map<std::string, std::string>>();
    received.requestId = event.at("requestId");
  }
  return received;
}

void TestApplication::awaitLog() {
  awaitEvent("log");
}

int TestApplication::awaitDeinitialised() {
  return awaitEvent("deinitialised").at("result");
}

int TestApplication::call(const std::string &name, const json &arguments) {
  return exchange(name, arguments).at("result");
}

// Events may come in between: they are kept for those who wait for them.
json TestApplication::exchange(const std::string &name, const json &arguments) {
  json command = arguments;
  command["call"] = name;
  _process.writeLine(command.dump());

  while (true) {
    json line = json::parse(_process.readLine());
    if (!line.contains("event")) {
      return line;
    }
    _events.push_back(line);
  }
}

json TestApplication::awaitEvent(const std::string &first, const std::string &second) {
  const auto isWanted = [&](const json &event) {
    return event.at("event") == first || event.at("event") == second;
  };
  auto found = std::find_if(_events.begin(), _events.end(), isWanted);
  while (found == _events.end()) {
    _events.push_back(json::parse(_process.readLine()));
    found = std::find_if(_events.begin(), _events.end(), isWanted);
  }
  json event = *found;
  _events.erase(found);
  return event;
}

} // namespace integration
