// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/DeclarationLint.h"

#include "assistant/actions/Lint.h"
#include "assistant/actions/check.h"

#include <algorithm>
#include <set>

namespace norix::assistant::actions {
namespace {

constexpr int kVersion = 1;
constexpr const char *kStateActionId = "getAppContext";

bool isVersion(const Json &value) {
  return value == kVersion;
}

// An action id is a text of the wire and of a command line: nothing in it may be invisible.
bool isActionId(const Json &value) {
  constexpr unsigned char kDelete = 0x7F;
  if (!isText(value)) {
    return false;
  }
  const auto &id = value.get_ref<const std::string &>();
  return std::none_of(id.begin(), id.end(), [](char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code <= ' ' || code == kDelete;
  });
}

bool areObjects(const Json &value) {
  return value.is_array() && std::all_of(value.begin(), value.end(), isObject);
}

bool areTexts(const Json &value) {
  return value.is_array() && std::all_of(value.begin(), value.end(), isText);
}

const std::vector<Member> &documentMembers() {
  static const std::vector<Member> members{
      {"version", isVersion, "the number 1", true},
      {"state", isObject, "an object that describes the state"},
      {"actions", isArray, "an array with an object for each action", true}};
  return members;
}

const std::vector<Member> &stateMembers() {
  static const std::vector<Member> members{
      {"description", isText, "a text that says what the state tells", true},
      {"form", isObject, "the form of the state's text, a schema"},
      {"examples", isArray, "an array of states"}};
  return members;
}

const std::vector<Member> &actionMembers() {
  static const std::vector<Member> members{
      {"id", isActionId, "a text without blanks and control characters", true},
      {"title", isText, "a text of a few words", true},
      {"description", isText, "a text that says what the action does", true},
      {"parameters", isObject, "the form of the parameters, a schema"},
      {"examples", areObjects, "an array of objects, each the parameters of one call"},
      {"utterances", areTexts, "an array of texts that users say"},
      {"readOnly", isBoolean, "true or false"},
      {"destructive", isBoolean, "true or false"},
      {"confirm", isBoolean, "true or false"}};
  return members;
}

bool isTrue(const Json &action, const char *name) {
  const auto found = action.find(name);
  return found != action.end() && *found == true;
}

class DeclarationLint {
public:
  explicit DeclarationLint(const LocatedJson &document)
      : _document(document.value()), _lint(document) {}

  Findings run() {
    if (_lint.checkMembers(_document, {}, "the document", documentMembers())) {
      checkState();
      checkActions();
    }
    return _lint.takeFindings();
  }

private:
  void checkState() {
    const Json state = _document.value("state", Json());
    if (!state.is_object()) {
      return;
    }
    _lint.checkMembers(state, "/state", "the state", stateMembers());
    const bool hasForm = state.contains("form") && state["form"].is_object();
    if (hasForm && _lint.checkForm(state["form"], "/state/form")) {
      checkExamples(state["form"], state, "/state");
    }
  }

  void checkActions() {
    const Json actions = _document.value("actions", Json());
    if (!actions.is_array()) {
      return;
    }
    for (std::size_t i = 0; i < actions.size(); ++i) {
      const std::string pointer = child("/actions", i);
      if (_lint.checkMembers(actions[i], pointer, "an action", actionMembers())) {
        checkId(actions[i], child(pointer, "id"));
        checkEffects(actions[i], pointer);
        checkParameters(actions[i], pointer);
        checkUtterances(actions[i], pointer);
      }
    }
  }

  void checkId(const Json &action, const std::string &pointer) {
    if (!action.contains("id") || !isActionId(action["id"])) {
      return;
    }
    const std::string id = action["id"];
    if (id == kStateActionId) {
      _lint.error(pointer, "'" + id
                               + "' asks for the state, no action can have this id; "
                                 "describe the state under 'state'");
    }
    if (!_ids.insert(id).second) {
      _lint.error(pointer, "the action '" + id + "' is declared twice; keep one of the two");
    }
  }

  void checkEffects(const Json &action, const std::string &pointer) {
    if (isTrue(action, "readOnly") && isTrue(action, "destructive")) {
      _lint.error(child(pointer, "destructive"),
                  "an action that only reads destroys nothing; keep one of the two");
    }
    if (isTrue(action, "destructive") && !action.contains("confirm")) {
      _lint.warning(child(pointer, "destructive"),
                    "say with 'confirm' whether the user is to be asked before");
    }
  }

  void checkParameters(const Json &action, const std::string &pointer) {
    if (!action.contains("parameters")) {
      checkNoParameters(action, pointer);
      return;
    }
    const Json &form = action["parameters"];
    const std::string place = child(pointer, "parameters");
    if (!form.is_object() || !_lint.checkForm(form, place)) {
      return;
    }
    if (form["type"] != "object") {
      _lint.error(child(place, "type"), "parameters are an object, not " + form["type"].dump());
      return;
    }
    checkFlatness(form, place);
    checkDescriptions(form, place);
    checkExamples(form, action, pointer);
  }

  void checkNoParameters(const Json &action, const std::string &pointer) {
    const Json examples = examplesOf(action);
    for (std::size_t i = 0; i < examples.size(); ++i) {
      if (examples[i].is_object() && !examples[i].empty()) {
        _lint.error(child(child(pointer, "examples"), i),
                    "an example with parameters, and the action declares none");
      }
    }
  }

  // None where it is something else, of which checkMembers() has told.
  static Json examplesOf(const Json &owner) {
    const Json examples = owner.value("examples", Json::array());
    return examples.is_array() ? examples : Json::array();
  }

  // Parameters are filled in one by one, by people and from what was heard.
  void checkFlatness(const Json &form, const std::string &pointer) {
    const Json properties = form.value("properties", Json::object());
    for (const auto &[name, part] : properties.items()) {
      const std::string place = child(child(pointer, "properties"), name);
      const Json items = part.value("items", Json{{"type", "string"}});
      const std::string &inner = items["type"].get_ref<const std::string &>();
      if (part["type"] == "object" || inner == "object" || inner == "array") {
        _lint.error(place, "parameters are flat: '" + name
                               + "' is to be a text, a number, a boolean, or an array of such");
      }
    }
  }

  void checkDescriptions(const Json &form, const std::string &pointer) {
    const Json properties = form.value("properties", Json::object());
    for (const auto &[name, part] : properties.items()) {
      if (!part.contains("description")) {
        _lint.warning(child(child(pointer, "properties"), name),
                      "the parameter '" + name + "' has no 'description'; say what it means");
      }
    }
  }

  void checkExamples(const Json &form, const Json &owner, const std::string &pointer) {
    const Json examples = examplesOf(owner);
    for (std::size_t i = 0; i < examples.size(); ++i) {
      for (const Violation &violation : check(form, examples[i])) {
        _lint.error(child(child(pointer, "examples"), i),
                    "the example does not have the form: " + violation.toString());
      }
    }
  }

  void checkUtterances(const Json &action, const std::string &pointer) {
    const Json utterances = action.value("utterances", Json());
    if (!areTexts(utterances)) {
      return;
    }
    for (std::size_t i = 0; i < utterances.size(); ++i) {
      checkPlaceholders(action, utterances[i], child(child(pointer, "utterances"), i));
    }
  }

  void checkPlaceholders(const Json &action, const std::string &utterance,
                         const std::string &pointer) {
    const Json parameters = action.value("parameters", Json::object());
    const Json properties =
        parameters.is_object() ? parameters.value("properties", Json::object()) : Json::object();
    for (size_t open = utterance.find('{'); open != std::string::npos;
         open = utterance.find('{', open + 1)) {
      const size_t close = utterance.find('}', open);
      const std::string name = utterance.substr(open + 1, close - open - 1);
      if (close == std::string::npos || !properties.contains(name)) {
        _lint.error(pointer, "'{" + name + "}' names no parameter of this action");
      }
    }
  }

  const Json &_document;
  Lint _lint;
  std::set<std::string> _ids;
};

} // namespace

Findings lint(const LocatedJson &document) {
  return DeclarationLint(document).run();
}

} // namespace norix::assistant::actions
