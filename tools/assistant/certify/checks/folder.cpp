// SPDX-License-Identifier: Apache-2.0
//
// What lies in the application's folder.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/trace/checks.h"

namespace norix::assistant::certify {
namespace {

// All findings of a kind, one under the other.
void judgeLint(const actions::Reading &reading, actions::Severity severity, Verdicts &verdicts) {
  std::string found;
  for (const actions::Finding &finding : reading.findings) {
    if (finding.severity == severity) {
      found += (found.empty() ? "" : "; ") + finding.toString();
    }
  }
  if (found.empty()) {
    verdicts.pass();
  } else {
    verdicts.fail(std::string(actions::kFile) + ":" + found);
  }
}

const actions::Reading &requireReading(Examination &examination) {
  if (!examination.reading()) {
    throw NotPossible("the application declares nothing: see the check 'declarations'");
  }
  return *examination.reading();
}

} // namespace

void checkManifest(Examination &examination, Verdicts &verdicts) {
  const std::string why = examination.whyNoTarget();
  if (why.empty()) {
    verdicts.pass();
  } else {
    verdicts.fail(why);
  }
}

void checkSdkVersion(Examination &examination, Verdicts &verdicts) {
  const launch::Target &target = examination.target();
  for (const trace::Finding &finding : trace::checkSdkVersion(target.metadata, target.manifest)) {
    verdicts.fail(finding.sentence);
    return;
  }
  verdicts.pass();
}

void checkDeclarations(Examination &examination, Verdicts &verdicts) {
  if (examination.reading()) {
    verdicts.pass();
  } else {
    verdicts.fail("'" + (examination.target().folder / actions::kFile).string() + "' is not there");
  }
}

void checkDeclarationsValid(Examination &examination, Verdicts &verdicts) {
  judgeLint(requireReading(examination), actions::Severity::Error, verdicts);
}

void checkDeclarationsLint(Examination &examination, Verdicts &verdicts) {
  judgeLint(requireReading(examination), actions::Severity::Warning, verdicts);
}

void checkUtterances(Examination &examination, Verdicts &verdicts) {
  if (examination.declared().actions.empty()) {
    throw NotPossible("the application declares no actions");
  }
  for (const actions::Action &action : examination.declared().actions) {
    if (action.utterances.empty()) {
      verdicts.fail("the action '" + action.id + "' has no 'utterances'", action.id);
    } else {
      verdicts.pass(action.id);
    }
  }
}

} // namespace norix::assistant::certify
