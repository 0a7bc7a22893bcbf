// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/check.h"

#include "assistant/actions/values.h"

#include <algorithm>
#include <set>

namespace norix::assistant::actions {
namespace {

// Who has that many mistakes reads no further.
constexpr std::size_t kMost = 100;

// Objects are equal whatever the order of their members.
nlohmann::json unordered(const Json &value) {
  return nlohmann::json(value);
}

std::size_t countCharacters(const std::string &text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

std::string plural(const Json &count, const char *noun) {
  return count.dump() + " " + noun + (count == 1 ? "" : "s");
}

class Checker {
public:
  std::vector<Violation> run(const Json &form, const Json &value) {
    check(form, value, {});
    return std::move(_violations);
  }

private:
  void check(const Json &form, const Json &value, const std::string &pointer) {
    const std::string type = form.at("type");
    if (!hasType(value, type)) {
      add(pointer, article(type) + type, value);
      return;
    }
    checkChoice(form, value, pointer);
    if (type == "object") {
      checkObject(form, value, pointer);
    } else if (type == "array") {
      checkArray(form, value, pointer);
    } else if (type == "string") {
      checkString(form, value, pointer);
    } else if (value.is_number()) {
      checkNumber(form, value, pointer);
    }
  }

  void checkChoice(const Json &form, const Json &value, const std::string &pointer) {
    if (form.contains("const") && unordered(form["const"]) != unordered(value)) {
      add(pointer, brief(form["const"]), value);
    }
    if (!form.contains("enum")) {
      return;
    }
    const Json &choices = form["enum"];
    const bool isThere = std::any_of(choices.begin(), choices.end(), [&](const Json &choice) {
      return unordered(choice) == unordered(value);
    });
    if (!isThere) {
      add(pointer, "one of " + brief(choices), value);
    }
  }

  void checkObject(const Json &form, const Json &value, const std::string &pointer) {
    static const Json none = Json::object();
    const Json &properties = form.contains("properties") ? form["properties"] : none;
    for (const auto &name : form.value("required", Json::array())) {
      if (!value.contains(name.get<std::string>())) {
        report(child(pointer, name.get<std::string>()), "a value", "nothing");
      }
    }
    const bool isOpen = form.value("additionalProperties", true);
    for (const auto &[name, member] : value.items()) {
      if (properties.contains(name)) {
        check(properties[name], member, child(pointer, name));
      } else if (!isOpen) {
        add(child(pointer, name), "nothing of that name", member);
      }
    }
  }

  void checkArray(const Json &form, const Json &value, const std::string &pointer) {
    if (form.contains("minItems") && value.size() < form["minItems"].get<std::size_t>()) {
      add(pointer, "at least " + plural(form["minItems"], "element"), value);
    }
    if (form.contains("maxItems") && value.size() > form["maxItems"].get<std::size_t>()) {
      add(pointer, "at most " + plural(form["maxItems"], "element"), value);
    }
    std::set<nlohmann::json> seen;
    const bool isSet = form.value("uniqueItems", false);
    for (std::size_t i = 0; i < value.size() && _violations.size() < kMost; ++i) {
      if (form.contains("items")) {
        check(form["items"], value[i], child(pointer, i));
      }
      if (isSet && !seen.insert(unordered(value[i])).second) {
        add(child(pointer, i), "an element that is not there before", value[i]);
      }
    }
  }

  void checkString(const Json &form, const Json &value, const std::string &pointer) {
    const std::size_t length = countCharacters(value.get_ref<const std::string &>());
    if (form.contains("minLength") && length < form["minLength"].get<std::size_t>()) {
      add(pointer, "a text of at least " + plural(form["minLength"], "character"), value);
    }
    if (form.contains("maxLength") && length > form["maxLength"].get<std::size_t>()) {
      add(pointer, "a text of at most " + plural(form["maxLength"], "character"), value);
    }
  }

  void checkNumber(const Json &form, const Json &value, const std::string &pointer) {
    const long double number = numberOf(value);
    const auto limit = [&](const char *name, const char *words, auto holds) {
      if (form.contains(name) && !holds(number, numberOf(form[name]))) {
        add(pointer, "a number " + std::string(words) + " " + form[name].dump(), value);
      }
    };
    limit("minimum", "of at least", [](auto a, auto b) { return a >= b; });
    limit("maximum", "of at most", [](auto a, auto b) { return a <= b; });
    limit("exclusiveMinimum", "above", [](auto a, auto b) { return a > b; });
    limit("exclusiveMaximum", "below", [](auto a, auto b) { return a < b; });
    limit("multipleOf", "that is a multiple of", isMultiple);
  }

  static std::string article(const std::string &type) {
    return std::string("aeiou").find(type.front()) == std::string::npos ? "a " : "an ";
  }

  void add(const std::string &pointer, const std::string &expected, const Json &found) {
    report(pointer, expected, brief(found));
  }

  void report(const std::string &pointer, const std::string &expected, const std::string &found) {
    if (_violations.size() < kMost) {
      _violations.push_back({pointer, expected, found});
    }
  }

  std::vector<Violation> _violations;
};

} // namespace

std::string Violation::toString() const {
  return (pointer.empty() ? "the whole" : pointer) + ": expected " + expected + ", found " + found;
}

std::vector<Violation> check(const Json &form, const Json &value) {
  return Checker().run(form, value);
}

} // namespace norix::assistant::actions
