// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Catalogue.h"

#include "assistant/actions/check.h"
#include "assistant/mcp/names.h"

#include <utility>

namespace norix::assistant::mcp {
namespace {

using actions::Action;
using actions::Declarations;
using actions::State;

// Every hint is written out: what a client assumes without it is the worst case.
Json annotations(const std::string &title, bool readOnly, bool destructive) {
  return {{"title", title},
          {"readOnlyHint", readOnly},
          {"destructiveHint", destructive && !readOnly},
          {"idempotentHint", readOnly},
          {"openWorldHint", false}};
}

Json emptyForm() {
  return {{"type", "object"}, {"additionalProperties", false}};
}

Json inputForm(const Json &parameters) {
  const bool takesNothing = parameters.value("properties", Json::object()).empty();
  return takesNothing ? emptyForm() : parameters;
}

Check checkAgainst(const Json &form) {
  return [form](const Json &value) -> std::optional<std::string> {
    std::string problems;
    for (const actions::Violation &violation : actions::check(form, value)) {
      problems += (problems.empty() ? "" : "; ") + violation.toString();
    }
    return problems.empty() ? std::nullopt : std::optional<std::string>(problems);
  };
}

// A form that every client can use as the schema of structured content.
bool isObjectForm(const std::optional<State> &state) {
  return state && state->form && state->form->value("type", Json()) == "object";
}

std::string sentence(std::string text) {
  if (!text.empty() && text.back() != '.') {
    text += '.';
  }
  return text;
}

Tool stateTool(const std::string &appId, const std::optional<State> &state, Names &names) {
  Tool tool;
  tool.name = names.make(appId, "state");
  tool.appId = appId;
  tool.actionId = kStateActionId;
  tool.title = "State of " + appId;
  const std::string declared = state ? sentence(state->description) + " " : "";
  tool.descriptor = {{"name", tool.name},
                     {"title", tool.title},
                     {"description", declared + "Reads the current state of the application "
                                         + appId + " and returns it; changes nothing."},
                     {"inputSchema", emptyForm()}};
  if (isObjectForm(state)) {
    tool.descriptor["outputSchema"] = *state->form;
    tool.checkAnswer = checkAgainst(*state->form);
  }
  tool.descriptor["annotations"] = annotations(tool.title, true, false);
  tool.checkArguments = checkAgainst(emptyForm());
  return tool;
}

Tool actionTool(const std::string &appId, const Action &action, Names &names) {
  Tool tool;
  tool.name = names.make(appId, action.id);
  tool.appId = appId;
  tool.actionId = action.id;
  tool.title = action.title.empty() ? action.id : action.title;
  tool.needsConsent = action.confirm;
  std::string description =
      sentence(action.description) + " Returns what the application " + appId + " says about it.";
  for (const Json &example : action.examples) {
    description += " Example: " + toLine(example);
  }
  const Json form = inputForm(action.parameters);
  tool.descriptor = {{"name", tool.name},
                     {"title", tool.title},
                     {"description", description},
                     {"inputSchema", form},
                     {"annotations", annotations(tool.title, action.readOnly, action.destructive)}};
  tool.checkArguments = checkAgainst(form);
  return tool;
}

Resource stateResource(const std::string &appId, const std::optional<State> &state) {
  const std::string uri = "norix://" + appId + "/state";
  return {uri,
          appId,
          {{"uri", uri},
           {"name", appId + " state"},
           {"title", "State of " + appId},
           {"description", state ? state->description : "What the application is doing now"},
           {"mimeType", state && state->form ? "application/json" : "text/plain"}}};
}

// The names in braces that a sample utterance holds.
std::vector<std::string> placeholders(const std::string &utterance) {
  std::vector<std::string> found;
  for (std::size_t open = utterance.find('{'); open != std::string::npos;
       open = utterance.find('{', open + 1)) {
    const std::size_t close = utterance.find('}', open);
    if (close != std::string::npos && close > open + 1) {
      found.push_back(utterance.substr(open + 1, close - open - 1));
    }
  }
  return found;
}

void addPrompts(const Action &action, const Tool &tool, std::vector<Prompt> &prompts) {
  int number = 0;
  for (const std::string &utterance : action.utterances) {
    const std::string name = tool.name + "_say_" + std::to_string(++number);
    Json arguments = Json::array();
    for (const std::string &placeholder : placeholders(utterance)) {
      arguments.push_back({{"name", placeholder}, {"required", true}});
    }
    Json descriptor = {{"name", name}, {"title", utterance}, {"description", tool.title}};
    if (!arguments.empty()) {
      descriptor["arguments"] = std::move(arguments);
    }
    prompts.push_back({name, utterance, std::move(descriptor)});
  }
}

} // namespace

Catalogue makeCatalogue(const std::vector<DeclaredApplication> &applications, bool readOnly) {
  Catalogue catalogue;
  Names names;
  for (const auto &[appId, declared] : applications) {
    const Declarations declarations = declared.value_or(Declarations());
    catalogue.tools.push_back(stateTool(appId, declarations.state, names));
    catalogue.resources.push_back(stateResource(appId, declarations.state));
    for (const Action &action : declarations.actions) {
      Tool tool = actionTool(appId, action, names);
      if (readOnly && !action.readOnly) {
        continue;
      }
      addPrompts(action, tool, catalogue.prompts);
      catalogue.tools.push_back(std::move(tool));
    }
  }
  return catalogue;
}

std::string promptText(const Prompt &prompt, const Json &arguments) {
  std::string text = prompt.utterance;
  for (const std::string &placeholder : placeholders(prompt.utterance)) {
    const Json value = arguments.is_object() ? arguments.value(placeholder, Json()) : Json();
    if (!value.is_string()) {
      throw RpcError(InvalidParams, "the prompt needs the argument \"" + placeholder + "\"");
    }
    const std::string braces = "{" + placeholder + "}";
    if (const std::size_t at = text.find(braces); at != std::string::npos) {
      text.replace(at, braces.size(), value.get<std::string>());
    }
  }
  return text;
}

} // namespace norix::assistant::mcp
