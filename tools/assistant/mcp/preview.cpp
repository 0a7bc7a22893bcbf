// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/preview.h"

#include <utility>

namespace norix::assistant::mcp {
namespace {

// Agents choose worse among more tools, and by descriptions that say little.
constexpr std::size_t kManyTools = 20;
constexpr std::size_t kShortDescription = 20;

std::string hintsOf(const Json &annotations) {
  if (annotations.at("readOnlyHint") == true) {
    return "reads only";
  }
  return annotations.at("destructiveHint") == true ? "destroys" : "changes something";
}

std::string paragraph(const Tool &tool) {
  std::string text = tool.name + "  (" + tool.actionId + " of " + tool.appId + "; "
                     + hintsOf(tool.descriptor.at("annotations"))
                     + (tool.needsConsent ? ", asks the user" : "") + ")\n  "
                     + tool.descriptor.at("description").get<std::string>() + '\n';
  const Json properties = tool.descriptor.at("inputSchema").value("properties", Json::object());
  for (const auto &[name, property] : properties.items()) {
    text += "  " + name + ": " + toLine(property) + '\n';
  }
  return text;
}

void lintAction(const std::string &appId, const actions::Action &action,
                std::vector<std::string> &warnings) {
  const std::string where = "'" + appId + "', action '" + action.id + "': ";
  if (action.description.size() < kShortDescription) {
    warnings.push_back(where
                       + "the description is short; say what the action does and when to "
                         "use it");
  }
  const Json properties = action.parameters.value("properties", Json::object());
  for (const auto &[name, property] : properties.items()) {
    if (!property.contains("description")) {
      warnings.push_back(where);
      warnings.back() += "the parameter '";
      warnings.back() += name;
      warnings.back() += "' has no description; models guess then";
    }
  }
}

} // namespace

Preview previewOf(const std::vector<Offered> &applications, bool readOnly) {
  Preview preview;
  const auto warn = [&preview](const std::string &text) { preview.warnings.push_back(text); };
  const std::vector<DeclaredApplication> declared = readDeclarations(applications, warn);
  for (const auto &[appId, declarations] : declared) {
    for (const actions::Action &action :
         declarations ? declarations->actions : std::vector<actions::Action>()) {
      lintAction(appId, action, preview.warnings);
    }
  }

  const Catalogue catalogue = makeCatalogue(declared, readOnly);
  if (catalogue.tools.size() > kManyTools) {
    warn(std::to_string(catalogue.tools.size()) + " tools are many; agents choose well among "
         + std::to_string(kManyTools) + " at most. Offer fewer applications, or --read-only");
  }
  Json tools = Json::array();
  for (const Tool &tool : catalogue.tools) {
    preview.text += paragraph(tool) + '\n';
    tools.push_back(tool.descriptor);
  }
  preview.text += std::to_string(catalogue.tools.size()) + " tools, "
                  + std::to_string(catalogue.resources.size()) + " resources, "
                  + std::to_string(catalogue.prompts.size()) + " prompts";
  preview.facts = {{"tools", std::move(tools)}, {"warnings", preview.warnings}};
  return preview;
}

} // namespace norix::assistant::mcp
