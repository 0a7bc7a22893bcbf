// SPDX-License-Identifier: Apache-2.0
//
// Scenario files that are refused: where, and what is said.
#include "assistant/scenario/read.h"
#include "assistant/trace/visible.h"

#include <gmock/gmock.h>

namespace norix::assistant::scenario {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Refusal {
  std::string name;
  std::string text;
  std::string place;
  std::string message;
};

void PrintTo(const Refusal &refusal, std::ostream *out) {
  *out << trace::visible(refusal.text);
}

const std::string kApplication = "application: {folder: music}\n";

// A scenario with one step, on line 2.
std::string withStep(const std::string &step) {
  return kApplication + "steps: [{" + step + "}]";
}

std::string nested(std::size_t levels) {
  return withStep("run: a, params: " + std::string(levels, '[') + std::string(levels, ']'));
}

const std::vector<Refusal> kRefusals = {
    {"AnEmptyFile", "", "1:1", "the file is empty"},
    {"SomethingThatIsNoMap", "[]", "1:1", "expected a scenario"},
    {"WhatIsNoYaml", "steps: [", "1:1", "not YAML"},
    {"AnUnknownKey", "stepz: []", "1:1", "'stepz' is not known here, did you mean 'steps'?"},
    {"AKeyThatStandsTwice", "name: a\nname: b", "2:1", "'name' stands here twice"},
    {"AKeyThatStandsTwiceDeepInside", withStep("run: a, params: {x: {y: 1, y: 2}}"), "2:37",
     "'y' stands here twice"},
    {"AKeyThatIsNoText", "? [a]\n: b", "1:3", "expected a name, got a list"},
    {"ASecondDocument", "name: a\n---\nname: b", "3:1", "a second document"},
    {"AnAlias", "name: &a x\nsteps: [*a]", "2:9", "aliases"},
    {"ATag", "name: !!str x", "1:7", "tags"},
    {"TooManyLevels", nested(100), "2:87", "nested too deeply"},
    {"NoSteps", kApplication, "1:1", "no 'steps'"},
    {"StepsThatAreNoList", kApplication + "steps: go", "2:8", "expected a list of steps, got 'go'"},
    {"NoApplication", "steps: [{state: }]", "1:1", "nothing says which application"},
    {"AnApplicationOfTwoKinds", "application: {running: a, folder: b}\nsteps: [{state: }]", "1:14",
     "an application that runs already"},
    {"AStepThatIsNoMap", kApplication + "steps: [state]", "2:9", "expected a step"},
    {"AStepThatDoesNothing", withStep("name: a"), "2:9", "expected one of: run, state, await"},
    {"AStepThatDoesTwoThings", withStep("run: a, wait: 1"), "2:18", "the step does 'run' already"},
    {"AKeyOfAnotherStep", withStep("wait: 1, expect: {}"), "2:19", "'expect' is not known here"},
    {"AListForAText", withStep("run: [a]"), "2:15", "expected the id of an action, got a list"},
    {"AValueOfState", withStep("state: now"), "2:17", "expected nothing after 'state:'"},
    {"ParametersTwice", withStep("run: a, params: {}, params-text: b"), "2:30",
     "'params-text' does not go with 'params'"},
    {"ExpectationsOfWhatIsAwaitedLater", withStep("run: a, as: b, expect: {}"), "2:25",
     "'expect' does not go with 'as'"},
    {"ATimeWithoutAUnitThatIsKnown", withStep("wait: 3 m"), "2:16", "expected a time"},
    {"ATimeBelowZero", withStep("wait: -1"), "2:16", "expected a time"},
    {"ATimeThatIsNoNumber", withStep("wait: nan"), "2:16", "expected a time"},
    {"AnOutcomeThatThereIsNot", withStep("state: , expect: {outcome: anwsered}"), "2:37",
     "got 'anwsered', did you mean 'answered'?"},
    {"AnExpressionThatIsNone", withStep("state: , expect: {matches: ['(']}"), "2:38",
     "not a regular expression of RE2: missing )"},
    {"APointerThatIsNone", withStep("state: , expect: {json: {volume: 1}}"), "2:35",
     "expected a JSON pointer"},
    {"AnExpressionThatKeepsNothing", withStep("state: , capture: {a: {matches: b}}"), "2:42",
     "with a group in parentheses"},
    {"ANameThatIsNone", withStep("state: , capture: {'a b': text}"), "2:29", "expected a name of"},
    {"ANameThatHasNoValue", withStep("run: '${volum}'"), "2:15", "nothing is called 'volum' here"},
    {"ANameThatHasNoValueYet",
     kApplication + "steps:\n- run: '${a}'\n- state:\n  capture: {a: text}", "3:8",
     "capture it in an earlier step"},
    {"ANameThatDoesNotEnd", withStep("run: '${a'"), "2:15", "nothing is called '' here"},
    {"ASenderThatThereIsNot", withStep("state: , sender: phone"), "2:27",
     "expected one of: assistant; got 'phone'"},
    {"ASenderWithoutAnId", "senders: {phone: {}}\nsteps: []", "1:11", "expected an 'id'"},
    {"ASenderCalledApplication", "senders: {application: {id: a}}\nsteps: []", "1:11",
     "no sender can be called 'application'"},
    {"ARestartOfASender", withStep("restart: assistant"), "2:19", "expected one of: application"},
    {"AwaitingWhatWasNotSent", withStep("await: a"), "2:17", "no earlier step has sent 'a'"},
    {"AwaitingTwice", kApplication + "steps: [{run: a, as: b}, {await: b}, {await: b}]", "2:46",
     "or it was awaited already"},
    {"ABurstOfNothing", withStep("burst: []"), "2:17", "expected a list of requests"},
    {"WaitingInABurst", withStep("burst: [{wait: 1}]"), "2:19", "expected run or state"},
    {"RetryingWithoutABound", withStep("state: , retry: {every: 1 s}"), "2:26",
     "expected a map like {every"},
    {"BytesThatAreNoBase64", withStep("run: a, params-base64: '!'"), "2:33",
     "expected bytes in Base64"},
    {"BytesOfAnotherAlphabet", withStep("run: a, params-base64: '\xc3\xa9\xc3\xa9'"), "2:33",
     "expected bytes in Base64"},
    {"AKeyThatTheBundleHas", withStep("run: a, set: {actionId: b}"), "2:24",
     "the key 'actionId' is in the bundle already"},
    {"AVariableOfTheEnvironmentThatIsNone",
     "application: {folder: a, environment: {'A=B': c}}\nsteps: []", "1:40",
     "the name of an environment variable"}};

class ARefusal : public testing::TestWithParam<Refusal> {};

TEST_P(ARefusal, SaysWhereAndWhatWasExpected) {
  try {
    readScenario("bad.yaml", GetParam().text, {});
    FAIL() << "it was not refused";
  } catch (const FileError &error) {
    EXPECT_THAT(error.what(), StartsWith("bad.yaml:" + GetParam().place + ": "));
    EXPECT_THAT(error.what(), HasSubstr(GetParam().message));
  }
}

INSTANTIATE_TEST_SUITE_P(Of, ARefusal, testing::ValuesIn(kRefusals),
                         [](const auto &chosen) { return chosen.param.name; });

TEST(AFile, ThatCannotBeReadIsRefused) {
  EXPECT_THROW(readScenario("/no/such/file.yaml", {}), FileError);
  EXPECT_THROW(readScenario("/", {}), FileError);
}

} // namespace
} // namespace norix::assistant::scenario
