// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_LINT_H
#define NORIX_ASSISTANT_ACTIONS_LINT_H

#include "assistant/actions/Finding.h"
#include "assistant/actions/LocatedJson.h"

#include <string>
#include <vector>

namespace norix::assistant::actions {

/// A member that an object may have.
struct Member {
  const char *name;
  bool (*isRight)(const Json &value);
  const char *expected;
  bool isRequired = false;
};

/// Collects what is wrong in a document, each with its place.
class Lint {
public:
  explicit Lint(const LocatedJson &document) : _document(document) {}

  void error(const std::string &pointer, const std::string &text);
  void errorAtName(const std::string &pointer, const std::string &text);
  void warning(const std::string &pointer, const std::string &text);

  /// Compares an object with the members it may have. False when it is no object.
  bool checkMembers(const Json &value, const std::string &pointer, const std::string &what,
                    const std::vector<Member> &members);
  /// Checks a schema of the subset, and everything in it. False when it has errors.
  bool checkForm(const Json &form, const std::string &pointer);

  /// What was found, in the order of the text.
  Findings takeFindings();

private:
  void add(Severity severity, Position position, const std::string &pointer,
           const std::string &text);

  const LocatedJson &_document;
  Findings _findings;
};

bool isText(const Json &value);
bool isBoolean(const Json &value);
bool isObject(const Json &value);
bool isArray(const Json &value);

} // namespace norix::assistant::actions

#endif
