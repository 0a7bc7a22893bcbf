// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/Declarations.h"
#include "assistant/cli/Listener.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/declared.h"
#include "assistant/launch/registered.h"

#include <array>
#include <ctime>
#include <memory>

namespace norix::assistant::cli {
namespace {

// Local time, as in 2026-11-21T14:03:31+0100.
std::string timeText(std::time_t time) {
  std::array<char, 32> text{};
  std::tm parts = {};
  localtime_r(&time, &parts);
  (void)std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &parts);
  return text.data();
}

Json toJson(const actions::Action &action) {
  return {{"id", action.id},
          {"title", action.title},
          {"description", action.description},
          {"parameters", action.parameters},
          {"readOnly", action.readOnly},
          {"destructive", action.destructive},
          {"confirm", action.confirm}};
}

std::string toText(const actions::Action &action) {
  std::string text = "    " + action.id;
  const Json properties = action.parameters.value("properties", Json::object());
  for (const auto &[name, form] : properties.items()) {
    text += " " + name + "=" + form.value("type", "");
  }
  return text + "    " + action.title;
}

// One application, as text and as JSON.
struct Entry {
  std::string text;
  Json json = Json::object();
};

void addDeclared(const actions::Declarations &declared, Entry &entry) {
  entry.json["declared"] = Json::array();
  for (const actions::Action &action : declared.actions) {
    entry.json["declared"].push_back(toJson(action));
    entry.text += "\n" + toText(action);
  }
}

void addDrift(const launch::Drift &drift, Entry &entry) {
  entry.json["notRegistered"] = drift.notRegistered;
  entry.json["notDeclared"] = drift.notDeclared;
  for (const std::string &id : drift.notRegistered) {
    entry.text += "\n    " + id + "    declared and not registered";
  }
  for (const std::string &id : drift.notDeclared) {
    entry.text += "\n    " + id + "    registered and not declared";
  }
}

void addActions(const std::string &appId, Entry &entry) {
  const auto folder = findApplicationFolder(appId);
  const auto reading = folder ? actions::read(*folder) : std::nullopt;
  const bool isUsable = reading && reading->isUsable();
  entry.json["declared"] = nullptr;
  if (isUsable) {
    addDeclared(reading->declarations, entry);
  } else {
    entry.text += reading ? "\n    its declarations have errors: norix-assistant doctor " + appId
                          : std::string("\n    declares nothing: no shared/res/norix-actions.json");
  }
  const auto registered = launch::registeredActions(appId);
  entry.json["registered"] = registered ? Json(*registered) : Json();
  if (registered) {
    addDrift(
        launch::compare(isUsable ? reading->declarations : actions::Declarations(), *registered),
        entry);
  }
}

Entry describe(const Listener &listener, bool withActions) {
  Entry entry;
  entry.text = listener.appId + "  pid " + std::to_string(listener.pid) + "  since "
               + timeText(listener.since);
  entry.json = {
      {"app", listener.appId}, {"pid", listener.pid}, {"since", timeText(listener.since)}};
  if (withActions) {
    addActions(listener.appId, entry);
  }
  return entry;
}

Ending list(bool withActions, const Console &console) {
  Ending ending;
  ending.facts["applications"] = Json::array();
  for (const Listener &listener : findListeners()) {
    const Entry entry = describe(listener, withActions);
    ending.facts["applications"].push_back(entry.json);
    ending.text = (ending.text ? *ending.text + "\n" : "") + entry.text;
  }
  if (!ending.text) {
    console.say("no application of this user listens; start one: norix-assistant launch FOLDER");
  }
  return ending;
}

} // namespace

void addList(Program &program) {
  auto withActions = std::make_shared<bool>(false);
  CLI::App &command =
      program.add("list", "Lists the applications that listen now",
                  {"norix-assistant list", "norix-assistant list --actions"},
                  [withActions](Console &console) { return list(*withActions, console); });
  command.add_flag("--actions", *withActions, "Their actions as well");
}

} // namespace norix::assistant::cli
