// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Completer.h"

#include "assistant/actions/Declarations.h"
#include "assistant/cli/Listener.h"
#include "assistant/cli/declared.h"
#include "assistant/launch/registered.h"

#include <algorithm>
#include <filesystem>

namespace norix::assistant::cli {

// Where in a command the word stands that is to be completed.
struct Completer::Place {
  const CLI::App *command = nullptr;
  // The option whose value it is, or null.
  const CLI::Option *option = nullptr;
  // The positional arguments before it.
  std::vector<std::string> arguments;
  bool afterOptions = false;
  std::string word;
};

namespace {

namespace fs = std::filesystem;
using Candidates = std::vector<Candidate>;

bool beginsWith(const std::string &text, const std::string &begin) {
  return text.compare(0, begin.size(), begin) == 0;
}

Candidates commandsOf(const CLI::App &app) {
  Candidates found;
  for (const CLI::App *command : app.get_subcommands({})) {
    if (!command->get_group().empty()) {
      found.push_back({command->get_name(), command->get_description()});
    }
  }
  return found;
}

const CLI::App *commandNamed(const CLI::App &app, const std::string &name) {
  for (const CLI::App *command : app.get_subcommands({})) {
    if (command->get_name() == name) {
      return command;
    }
  }
  return nullptr;
}

Candidates optionsOf(const CLI::App &app) {
  Candidates found;
  for (const CLI::Option *option : app.get_options()) {
    for (const std::string &name : option->get_lnames()) {
      found.push_back({"--" + name, option->get_description()});
    }
  }
  return found;
}

Candidates applications() {
  Candidates found;
  for (const Listener &listener : findListeners()) {
    found.push_back({listener.appId, "listens"});
  }
  return found;
}

bool hasText(const Candidates &found, const std::string &text) {
  return std::any_of(found.begin(), found.end(),
                     [&text](const Candidate &candidate) { return candidate.text == text; });
}

void addInstalled(Candidates &found) {
  for (const std::string &id : installedApplications()) {
    if (!hasText(found, id)) {
      found.push_back({id, "installed"});
    }
  }
}

void addFolders(Candidates &found, const std::string &word) {
  const std::string parent = word.substr(0, word.find_last_of('/') + 1);
  std::error_code unreadable;
  for (const auto &entry : fs::directory_iterator(parent.empty() ? "." : parent, unreadable)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_directory(unreadable) && name.front() != '.') {
      found.push_back({parent + name + "/", "folder"});
    }
  }
}

std::optional<actions::Declarations> declarationsOf(const std::string &appId) {
  const std::optional<fs::path> folder = findApplicationFolder(appId);
  std::optional<actions::Reading> reading = folder ? actions::read(*folder) : std::nullopt;
  return reading ? std::optional(std::move(reading->declarations)) : std::nullopt;
}

Candidates actionsOf(const std::string &appId) {
  Candidates found;
  for (const actions::Action &action :
       declarationsOf(appId).value_or(actions::Declarations()).actions) {
    found.push_back({action.id, action.title});
  }
  for (const std::string &id : launch::registeredActions(appId).value_or(std::set<std::string>())) {
    if (!hasText(found, id)) {
      found.push_back({id, "registered"});
    }
  }
  return found;
}

// "volume=", or "light=on" where there is a choice.
void addParameter(Candidates &found, const std::string &name, const actions::Json &form) {
  const std::string about = form.value("description", "");
  const actions::Json choices = form.value("type", "") == "boolean"
                                    ? actions::Json{true, false}
                                    : form.value("enum", actions::Json());
  for (const actions::Json &choice : choices) {
    found.push_back(
        {name + "=" + (choice.is_string() ? choice.get<std::string>() : choice.dump()), about});
  }
  if (choices.empty()) {
    found.push_back({name + "=", about});
  }
}

Candidates parametersOf(const std::string &appId, const std::string &actionId) {
  Candidates found;
  const auto declarations = declarationsOf(appId);
  const actions::Action *action = declarations ? declarations->find(actionId) : nullptr;
  if (action != nullptr) {
    const actions::Json properties =
        action->parameters.value("properties", actions::Json::object());
    for (const auto &[name, form] : properties.items()) {
      addParameter(found, name, form);
    }
  }
  return found;
}

// Options that are no flags have a value in the next word.
const CLI::Option *valueOption(const CLI::App &command, const std::string &word) {
  const CLI::Option *option = command.get_option_no_throw(word);
  return option != nullptr && option->get_type_size() != 0 ? option : nullptr;
}

// The name of the positional argument that comes next; the last one may be repeated.
std::string argumentName(const CLI::App &command, size_t index) {
  std::vector<const CLI::Option *> positionals;
  for (const CLI::Option *option : command.get_options()) {
    if (option->get_positional()) {
      positionals.push_back(option);
    }
  }
  if (positionals.empty()) {
    return {};
  }
  const bool isRepeated = positionals.back()->get_items_expected_max() > 1;
  if (index >= positionals.size() && !isRepeated) {
    return {};
  }
  return positionals[std::min(index, positionals.size() - 1)]->get_single_name();
}

Candidates argumentsFor(const std::string &name, const std::vector<std::string> &before,
                        const std::string &word) {
  if (name == "ACTION") {
    return actionsOf(before.front());
  }
  if (name == "PARAMETER") {
    return parametersOf(before[0], before[1]);
  }
  if (name == "SHELL") {
    return {{"bash", ""}, {"zsh", ""}, {"fish", ""}};
  }
  Candidates found;
  if (name == "APP" || name == "FOLDER|APP") {
    found = applications();
  }
  if (name == "FOLDER|APP") {
    addInstalled(found);
    addFolders(found, word);
  }
  return found;
}

} // namespace

Completer::Place Completer::placeOf(const std::vector<std::string> &words) const {
  Place place;
  place.word = words.back();
  place.command = words.size() > 1 ? commandNamed(_commandLine, words.front()) : nullptr;
  if (place.command == nullptr) {
    return place;
  }
  for (size_t i = 1; i + 1 < words.size(); ++i) {
    const bool isValue = place.option != nullptr;
    place.option = nullptr;
    if (words[i] == "--") {
      place.afterOptions = true;
    } else if (!isValue && beginsWith(words[i], "--") && !place.afterOptions) {
      place.option = valueOption(*place.command, words[i]);
    } else if (!isValue) {
      place.arguments.push_back(words[i]);
    }
  }
  return place;
}

std::vector<Candidate> Completer::candidatesAt(const Place &place) const {
  const bool isOption = beginsWith(place.word, "-") && !place.afterOptions;
  if (place.command == nullptr) {
    return isOption ? optionsOf(_commandLine) : commandsOf(_commandLine);
  }
  if (place.option != nullptr) {
    return {};
  }
  return isOption ? optionsOf(*place.command)
                  : argumentsFor(argumentName(*place.command, place.arguments.size()),
                                 place.arguments, place.word);
}

std::vector<Candidate> Completer::complete(const std::vector<std::string> &words) const {
  if (words.empty()) {
    return commandsOf(_commandLine);
  }
  const Place place = placeOf(words);
  if (place.command == nullptr && words.size() > 1) {
    return {};
  }
  Candidates found = candidatesAt(place);
  found.erase(std::remove_if(found.begin(), found.end(),
                             [&place](const Candidate &candidate) {
                               return !beginsWith(candidate.text, place.word);
                             }),
              found.end());
  return found;
}

} // namespace norix::assistant::cli
