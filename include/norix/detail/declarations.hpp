/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_DECLARATIONS_HPP
#define NORIX_DETAIL_DECLARATIONS_HPP

#include <norix/detail/Element.hpp>
#include <norix/detail/Registry.hpp>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace norix {
namespace detail {

// In the order in which the members are written: the file is read by people.
using OrderedJson = nlohmann::ordered_json;

// A text of JSON that the application gave; what is none is left as a text, for the lint to find.
inline OrderedJson parsed(const std::string &text) {
  OrderedJson value = OrderedJson::parse(text, nullptr, false);
  return value.is_discarded() ? OrderedJson(text) : value;
}

inline void addExamples(OrderedJson &declared, const std::vector<std::string> &examples) {
  for (const std::string &example : examples) {
    declared["examples"].push_back(parsed(example));
  }
}

inline OrderedJson declarationOf(const std::string &id, const Registry::Registered &registered) {
  const Action &about = registered.about;
  OrderedJson declared = {{"id", id}};
  declared["title"] = about.title().empty() ? id : about.title();
  declared["description"] =
      about.description().empty() ? declared["title"].get<std::string>() : about.description();
  if (!registered.parameters.empty()) {
    declared["parameters"] = parsed(registered.parameters);
  }
  addExamples(declared, about.examples());
  if (!about.utterances().empty()) {
    declared["utterances"] = about.utterances();
  }
  if (about.isReadOnly()) {
    declared["readOnly"] = true;
  }
  if (about.isDestructive()) {
    declared["destructive"] = true;
    declared["confirm"] = about.needsConfirmation();
  } else if (about.needsConfirmation()) {
    declared["confirm"] = true;
  }
  return declared;
}

// NeedsJson, because it stands for nobody but this.
template <>
struct DeclarationsOf<NeedsJson> {
  static std::string text(const Registry &registry) {
    OrderedJson document = {{"version", 1}};
    const State &state = registry.aboutState();
    if (registry.hasState() && !state.description().empty()) {
      document["state"]["description"] = state.description();
      if (!state.form().empty()) {
        document["state"]["form"] = parsed(state.form());
      }
      addExamples(document["state"], state.examples());
    }
    document["actions"] = OrderedJson::array();
    for (const auto &[id, registered] : registry.actions()) {
      document["actions"].push_back(declarationOf(id, registered));
    }
    return document.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
  }
};

} // namespace detail
} // namespace norix

#endif
