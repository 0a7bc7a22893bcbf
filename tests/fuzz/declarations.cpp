// SPDX-License-Identifier: Apache-2.0
//
// The text of a file of declarations. What is found wrong stands where the text has a place; what
// is usable keeps its own rules, and any parameters can be checked against it.
#include "support/check.h"

#include "assistant/actions/Declarations.h"
#include "assistant/actions/check.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

using namespace norix::assistant::actions;
using fuzz::check;

// The place just behind the text is one as well: that is where a text that breaks off is wrong.
void checkFinding(const Finding &finding, const std::string &text) {
  const auto lines = 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  check(finding.position.line >= 1 && finding.position.line <= lines,
        "a finding names a line that there is");
  check(finding.position.column >= 1 && finding.position.column <= text.size() + 1,
        "a finding names a column that there may be");
  check(!finding.text.empty(), "a finding says what is wrong");
  check(finding.pointer.empty() || finding.pointer.front() == '/', "a pointer begins with a slash");
}

void checkAction(const Declarations &declarations, const Action &action) {
  check(!action.id.empty(), "an action has an id");
  check(declarations.find(action.id) == &action, "an id is declared once");
  for (const Json &example : action.examples) {
    check(norix::assistant::actions::check(action.parameters, example).empty(),
          "an example meets the form");
  }
  for (const Json &value :
       {Json(), Json::array({1, "a"}), Json{{"volume", -1.5}, {"x", nullptr}}}) {
    (void)norix::assistant::actions::check(action.parameters, value);
  }
}

void checkUsable(const Declarations &declarations) {
  for (const Action &action : declarations.actions) {
    checkAction(declarations, action);
  }
  if (declarations.state && declarations.state->form) {
    for (const Json &example : declarations.state->examples) {
      check(norix::assistant::actions::check(*declarations.state->form, example).empty(),
            "an example of the state meets its form");
    }
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  const Reading reading = parse(text);
  for (const Finding &finding : reading.findings) {
    checkFinding(finding, text);
  }
  const bool hasErrors =
      std::any_of(reading.findings.begin(), reading.findings.end(),
                  [](const Finding &finding) { return finding.severity == Severity::Error; });
  check(reading.isUsable() != hasErrors, "declarations are usable unless there is an error");
  if (reading.isUsable()) {
    checkUsable(reading.declarations);
  }
  return 0;
}
