// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/Lint.h"

#include "assistant/actions/nearest.h"

#include <algorithm>
#include <utility>

namespace norix::assistant::actions {

bool isText(const Json &value) {
  return value.is_string() && !value.get_ref<const std::string &>().empty();
}

bool isBoolean(const Json &value) {
  return value.is_boolean();
}

bool isObject(const Json &value) {
  return value.is_object();
}

bool isArray(const Json &value) {
  return value.is_array();
}

void Lint::error(const std::string &pointer, const std::string &text) {
  add(Severity::Error, _document.at(pointer), pointer, text);
}

void Lint::errorAtName(const std::string &pointer, const std::string &text) {
  add(Severity::Error, _document.nameAt(pointer), pointer, text);
}

void Lint::warning(const std::string &pointer, const std::string &text) {
  add(Severity::Warning, _document.at(pointer), pointer, text);
}

void Lint::add(Severity severity, Position position, const std::string &pointer,
               const std::string &text) {
  _findings.push_back({severity, position, pointer, text});
}

bool Lint::checkMembers(const Json &value, const std::string &pointer, const std::string &what,
                        const std::vector<Member> &members) {
  if (!value.is_object()) {
    error(pointer, what + " is an object, not " + brief(value));
    return false;
  }
  std::vector<std::string> names;
  for (const Member &member : members) {
    names.emplace_back(member.name);
    const auto found = value.find(member.name);
    if (found == value.end() && member.isRequired) {
      error(pointer, what + " has no '" + member.name + "'; add " + member.expected);
    } else if (found != value.end() && !member.isRight(*found)) {
      error(child(pointer, member.name),
            std::string("'") + member.name + "' is " + member.expected + ", not " + brief(*found));
    }
  }
  for (const auto &[name, member] : value.items()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      errorAtName(child(pointer, name),
                  std::string("unknown keyword '").append(name).append("' in ").append(what)
                      + suggestion(name, names));
    }
  }
  return true;
}

Findings Lint::takeFindings() {
  std::stable_sort(_findings.begin(), _findings.end(), [](const Finding &a, const Finding &b) {
    return std::make_pair(a.position.line, a.position.column)
           < std::make_pair(b.position.line, b.position.column);
  });
  return std::move(_findings);
}

} // namespace norix::assistant::actions
