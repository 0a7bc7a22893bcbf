// SPDX-License-Identifier: Apache-2.0
//
// Scenario files that are refused: where, and what is said.
#include "assistant/scenario/read.h"
#include "support/TemporaryFolder.h"

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
  *out << refusal.name;
}

const std::string kApplication = "application: {folder: music}\n";

// A scenario with one step, on line 2.
std::string withStep(const std::string &step) {
  return kApplication + "steps: [{" + step + "}]";
}

std::string repeated(const std::string &text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
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
    {"BytesThatAreBase64InPart", withStep("run: a, params-base64: 'QQ==QQ=='"), "2:33",
     "expected bytes in Base64"},
    {"BytesWithANul", withStep("run: a, params-base64: 'QQBB'"), "2:33", "bytes with a NUL"},
    {"ATextWithANul", withStep(R"(run: "a\0b")"), "2:15", "a text with a NUL"},
    {"AKeyOfTheBundleWithANul", withStep(R"(run: a, set: {"a\0b": c})"), "2:24",
     "expected a key of the bundle"},
    {"AKeyOfTheBundleThatIsEmpty", withStep("run: a, set: {'': b}"), "2:24",
     "expected a key of the bundle, got ''"},
    {"ANumberThatIsTooLarge", withStep("run: a, params: {x: [1, -1e999]}"), "2:34",
     "the number '-1e999' is out of range"},
    {"ATimeThatIsInfinite", withStep("wait: inf"), "2:16", "expected a time"},
    {"ATimeThatIsTooLarge", withStep("wait: 1e300"), "2:16", "expected a time of at most a day"},
    {"ATimeoutOfNothing", kApplication + "timeout: 0", "2:10", "a time of at least 1 ms, got '0'"},
    {"ACompletionTimeoutOfNothing", "application: {folder: a, completion-timeout: 0 s}", "1:46",
     "a time of at least 1 ms"},
    {"AnIdOfTheAllowListOfTwoLines", R"(application: {folder: a, allow-list: ["b\nc"]})", "1:39",
     "an application id in one line"},
    {"AVariableOfTheEnvironmentWithANul", R"(application: {folder: a, environment: {"A\0": c}})",
     "1:40", "the name of an environment variable"},
    {"MoreValuesThanSomebodyWrites", withStep("run: a, params: [" + repeated("1,", 100000) + "]"),
     "2:200003", "too large: 100000 values are the most"},
    {"NestingWithoutAnEnd", "a: " + std::string(100000, '['), "1:36", "nested too deeply"},
    {"KeysInKeysWithoutAnEnd", repeated("? ", 100000) + "a", "1:129", "nested too deeply"},
    {"AliasesOfAliases", "a: &a [x]\nb: &b [*a, *a]\nc: [*b, *b]", "2:8", "aliases"},
    {"ATagWithoutAnEnd", "a: !<" + std::string(100000, 'x'), "1:100006", "not YAML"},
    {"AVersionThatThereIsNot", "%YAML 99999999999999999999.9\n---\na: 1", "1:1", "not YAML"},
    {"ACharacterThatThereIsNot", R"(name: "\UFFFFFFFF")", "1:18", "not YAML: invalid unicode"},
    {"ALongText", "steps: " + std::string(1000000, 'a'), "1:8",
     "got '" + std::string(80, 'a') + "…'"},
    {"ALongKey", "? " + repeated("ä", 100000) + "\n: 1", "1:3",
     "'" + repeated("ä", 40) + "…' is not known here; expected one of"},
    {"AnExpressionThatIsTooLarge", withStep("state: , expect: {matches: '((a{100}){100}){100}'}"),
     "2:37", "not a regular expression of RE2: invalid repetition size"},
    {"AnExpressionThatIsTooLong",
     withStep("state: , expect: {matches: '" + std::string(1000000, 'a') + "'}"), "2:37",
     "not a regular expression of RE2: pattern too large"},
    {"APointerWithAWrongEscape", withStep("state: , expect: {json: {'/a~2': 1}}"), "2:35",
     "expected a JSON pointer"},
    {"AValueThatFillsTheMemory",
     "variables: {a: " + std::string(10000, 'x') + "}\napplication: {folder: '"
         + repeated("${a}", 10000) + "'}\nsteps: [{state: }]",
     "1:1", "larger than 16 MiB"},
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
  const support::TemporaryFolder folder;
  folder.write("large.yaml", std::string(3000000, '['));
  EXPECT_THROW(readScenario(folder / "large.yaml", {}), FileError);
}

} // namespace
} // namespace norix::assistant::scenario
