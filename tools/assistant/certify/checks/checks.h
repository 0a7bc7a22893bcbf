// SPDX-License-Identifier: Apache-2.0
//
// The checks of the catalogue, in a file for each chapter. A check gives at least one verdict, or
// throws NotPossible when it cannot be tried.
#ifndef NORIX_ASSISTANT_CERTIFY_CHECKS_CHECKS_H
#define NORIX_ASSISTANT_CERTIFY_CHECKS_CHECKS_H

#include "assistant/certify/parameters.h"

namespace norix::assistant::certify {

class Examination;
class Verdicts;

// folder.cpp
void checkManifest(Examination &examination, Verdicts &verdicts);
void checkSdkVersion(Examination &examination, Verdicts &verdicts);
void checkDeclarations(Examination &examination, Verdicts &verdicts);
void checkDeclarationsValid(Examination &examination, Verdicts &verdicts);
void checkDeclarationsLint(Examination &examination, Verdicts &verdicts);
void checkUtterances(Examination &examination, Verdicts &verdicts);

// life.cpp
void checkStarts(Examination &examination, Verdicts &verdicts);
void checkEnds(Examination &examination, Verdicts &verdicts);
void checkRestarts(Examination &examination, Verdicts &verdicts);

// requests.cpp
void checkDeclaredRegistered(Examination &examination, Verdicts &verdicts);
void checkRegisteredDeclared(Examination &examination, Verdicts &verdicts);
void checkStateAnswered(Examination &examination, Verdicts &verdicts);
void checkStateForm(Examination &examination, Verdicts &verdicts);
void checkExamplesAnswered(Examination &examination, Verdicts &verdicts);
void checkAnsweredOnce(Examination &examination, Verdicts &verdicts);
void checkFindings(Examination &examination, Verdicts &verdicts);

// together.cpp
void checkStateDuringAction(Examination &examination, Verdicts &verdicts);
void checkBurstNewest(Examination &examination, Verdicts &verdicts);

// parameters.cpp
using MakeParams = std::vector<Params> (*)(const actions::Action &action);
void judgeParameters(Examination &examination, Verdicts &verdicts, MakeParams make);
/// Parameters of one kind for every action.
template <MakeParams make>
void checkParameters(Examination &examination, Verdicts &verdicts) {
  judgeParameters(examination, verdicts, make);
}

// fuzz.cpp
void checkParametersFuzz(Examination &examination, Verdicts &verdicts);

// assistants.cpp
void checkAssistantLeaves(Examination &examination, Verdicts &verdicts);
void checkAssistantKilled(Examination &examination, Verdicts &verdicts);
void checkAssistantNeverReads(Examination &examination, Verdicts &verdicts);
void checkReconnect(Examination &examination, Verdicts &verdicts);
void checkAllowListWith(Examination &examination, Verdicts &verdicts);
void checkAllowListWithout(Examination &examination, Verdicts &verdicts);

// load.cpp
void checkLoadAnswered(Examination &examination, Verdicts &verdicts);
void checkLoadMemory(Examination &examination, Verdicts &verdicts);
void checkLoadDescriptors(Examination &examination, Verdicts &verdicts);

} // namespace norix::assistant::certify

#endif
