// SPDX-License-Identifier: Apache-2.0
//
// The subset of JSON Schema 2020-12 that forms are written in: which keyword goes with which type.
#include "assistant/actions/Lint.h"
#include "assistant/actions/check.h"
#include "assistant/actions/nearest.h"
#include "assistant/actions/values.h"

#include <algorithm>
#include <array>

namespace norix::assistant::actions {
namespace {

const std::vector<std::string> kTypes{"string", "number", "integer", "boolean", "array", "object"};

bool isType(const Json &value) {
  return value.is_string() && std::find(kTypes.begin(), kTypes.end(), value) != kTypes.end();
}

bool isAnything(const Json & /*value*/) {
  return true;
}

bool isNumber(const Json &value) {
  return value.is_number();
}

bool isAboveZero(const Json &value) {
  return value.is_number() && numberOf(value) > 0;
}

bool isCount(const Json &value) {
  return value.is_number_unsigned();
}

bool isFilledArray(const Json &value) {
  return value.is_array() && !value.empty();
}

bool areNames(const Json &value) {
  return value.is_array() && std::all_of(value.begin(), value.end(), [](const Json &name) {
           return name.is_string();
         });
}

void append(std::vector<Member> &members, std::initializer_list<Member> more) {
  members.insert(members.end(), more);
}

// The keywords that a form of this type may have; without a type, those of all.
std::vector<Member> keywordsOf(const std::string &type) {
  const bool isAny = type.empty();
  std::vector<Member> members{
      {"type", isType, "one of string, number, integer, boolean, array, object", true},
      {"title", isText, "a text"},
      {"description", isText, "a text"},
      {"default", isAnything, "a value"},
      {"const", isAnything, "a value"},
      {"enum", isFilledArray, "an array of at least one value"},
      {"examples", isArray, "an array of values"}};
  if (isAny || type == "number" || type == "integer") {
    append(members, {{"minimum", isNumber, "a number"},
                     {"maximum", isNumber, "a number"},
                     {"exclusiveMinimum", isNumber, "a number"},
                     {"exclusiveMaximum", isNumber, "a number"},
                     {"multipleOf", isAboveZero, "a number above 0"}});
  }
  if (isAny || type == "string") {
    append(members, {{"minLength", isCount, "a whole number from 0 on"},
                     {"maxLength", isCount, "a whole number from 0 on"}});
  }
  if (isAny || type == "array") {
    append(members, {{"items", isObject, "the form of the elements"},
                     {"minItems", isCount, "a whole number from 0 on"},
                     {"maxItems", isCount, "a whole number from 0 on"},
                     {"uniqueItems", isBoolean, "true or false"}});
  }
  if (isAny || type == "object") {
    append(members, {{"properties", isObject, "an object with a form for each name"},
                     {"required", areNames, "an array of names"},
                     {"additionalProperties", isBoolean, "true or false"}});
  }
  return members;
}

// Checks one form; the lint's errors are those of the whole document, so it counts its own.
class FormLint {
public:
  explicit FormLint(Lint &lint) : _lint(lint) {}

  bool check(const Json &form, const std::string &pointer) {
    const bool hasOwnType = form.is_object() && form.contains("type") && isType(form["type"]);
    if (!require(_lint.checkMembers(form, pointer, "a form",
                                    keywordsOf(hasOwnType ? form["type"].get<std::string>() : "")))
        || !require(hasOwnType) || !require(hasRightMembers(form))) {
      return false;
    }
    checkBounds(form, pointer);
    checkParts(form, pointer);
    if (_isGood) {
      checkValues(form, pointer);
    }
    return _isGood;
  }

private:
  // checkMembers() has reported what is wrong here.
  static bool hasRightMembers(const Json &form) {
    const std::vector<Member> known = keywordsOf(form["type"]);
    return std::all_of(form.items().begin(), form.items().end(), [&known](const auto &item) {
      return std::any_of(known.begin(), known.end(), [&item](const Member &member) {
        return item.key() == member.name && member.isRight(item.value());
      });
    });
  }

  void checkBounds(const Json &form, const std::string &pointer) {
    constexpr std::array<std::pair<const char *, const char *>, 4> kBounds{
        {{"minimum", "maximum"},
         {"exclusiveMinimum", "exclusiveMaximum"},
         {"minLength", "maxLength"},
         {"minItems", "maxItems"}}};
    for (const auto &[low, high] : kBounds) {
      if (form.contains(low) && form.contains(high) && numberOf(form[low]) > numberOf(form[high])) {
        fail(child(pointer, low),
             std::string("'") + low + "' is above '" + high + "': nothing meets both");
      }
    }
  }

  void checkParts(const Json &form, const std::string &pointer) {
    if (form.contains("items")) {
      require(FormLint(_lint).check(form["items"], child(pointer, "items")));
    }
    const Json properties = form.value("properties", Json::object());
    std::vector<std::string> names;
    for (const auto &[name, part] : properties.items()) {
      names.push_back(name);
      require(FormLint(_lint).check(part, child(child(pointer, "properties"), name)));
    }
    const Json required = form.value("required", Json::array());
    for (std::size_t i = 0; i < required.size(); ++i) {
      const std::string name = required[i];
      if (!properties.contains(name)) {
        fail(child(child(pointer, "required"), i),
             "'" + name + "' is required and not among the properties" + suggestion(name, names));
      }
    }
  }

  // The values that the form itself names have to meet it.
  void checkValues(const Json &form, const std::string &pointer) {
    Json bare = form;
    bare.erase("const");
    bare.erase("enum");
    for (const char *name : {"const", "default"}) {
      if (form.contains(name)) {
        checkValue(*name == 'c' ? bare : form, form[name], child(pointer, name));
      }
    }
    for (const char *name : {"enum", "examples"}) {
      const Json values = form.value(name, Json::array());
      for (std::size_t i = 0; i < values.size(); ++i) {
        checkValue(name[1] == 'n' ? bare : form, values[i], child(child(pointer, name), i));
      }
    }
  }

  void checkValue(const Json &form, const Json &value, const std::string &pointer) {
    for (const Violation &violation : actions::check(form, value)) {
      fail(pointer + violation.pointer, "does not have its own form: " + violation.toString());
    }
  }

  bool require(bool isGood) {
    _isGood = _isGood && isGood;
    return isGood;
  }

  void fail(const std::string &pointer, const std::string &text) {
    _isGood = false;
    _lint.error(pointer, text);
  }

  Lint &_lint;
  bool _isGood = true;
};

} // namespace

bool Lint::checkForm(const Json &form, const std::string &pointer) {
  return FormLint(*this).check(form, pointer);
}

} // namespace norix::assistant::actions
