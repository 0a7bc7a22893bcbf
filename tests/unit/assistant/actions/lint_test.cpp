// SPDX-License-Identifier: Apache-2.0
//
// What is wrong in declarations, and where: each with its line and column.
#include "assistant/actions/Declarations.h"

#include <gmock/gmock.h>

namespace norix::assistant::actions {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

struct Mistake {
  const char *name;
  std::string text;
  const char *place; // "line:column: severity: "
  const char *message;
};

void PrintTo(const Mistake &tried, std::ostream *out) {
  *out << tried.name;
}

// The document begins on line 1, the members on line 2.
std::string document(const std::string &members) {
  return "{\n" + members + "}";
}

std::string actions(const std::string &list) {
  return document(R"("version":1,"actions":[)" + list + "]");
}

// One action; its further members are on line 3.
std::string action(const std::string &members) {
  return actions("{\"id\":\"a\",\"title\":\"A\",\"description\":\"Does A.\"\n," + members + "}");
}

// The form of its parameters is on line 3 from column 15 on.
std::string parameters(const std::string &form) {
  return action(R"("parameters":)" + form);
}

// The form of the parameter p is on line 4.
std::string parameter(const std::string &members) {
  return parameters("{\"type\":\"object\",\"properties\":{\"p\":\n{\"description\":\"P\"," + members
                    + "}}}");
}

class ADeclaration : public testing::TestWithParam<Mistake> {};

const auto kNameOf = [](const auto &tried) { return tried.param.name; };

INSTANTIATE_TEST_SUITE_P(
    OfAnything, ADeclaration,
    testing::Values(
        Mistake{"NoJson", "{\"version\": 1,\n  oops}", "2:3: error: ", "syntax error"},
        // The sentence differs with the version of the JSON library; this word is in each.
        Mistake{"NothingAtAll", "", "1:1: error: ", "input"},
        Mistake{"SomethingAfterTheEnd", "{}\n{}", "2:1: error: ", "syntax error"},
        Mistake{"ANameTwice", "{\"version\":1,\n \"version\":1}",
                "2:2: error: ", "'version' is there twice"},
        Mistake{"NoObject", "[]", "1:1: error: ", "the document is an object, not []"},
        Mistake{"NoVersion", R"({"actions":[]})", "1:1: error: ", "no 'version'; add the number 1"},
        Mistake{"AnotherVersion", document(R"("version":2,"actions":[])"),
                "2:11: error: ", "'version' is the number 1, not 2"},
        Mistake{"NoActions", R"({"version":1})", "1:1: error: ", "no 'actions'"},
        Mistake{
            "AnUnknownKeyword", document(R"("version":1,"action":[],"actions":[])"),
            "2:13: error: ", "unknown keyword 'action' in the document, did you mean 'actions'?"},
        Mistake{"DepthWithoutEnd", std::string(100000, '['), "1:65: error: ", "nested too deep"},
        Mistake{"CharactersOfSeveralBytes", document(R"("ä€":1,"version":2,"actions":[])"),
                "2:1: error: ", "unknown keyword 'ä€'"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    OfAState, ADeclaration,
    testing::Values(Mistake{"WithoutDescription",
                            document(R"("version":1,"actions":[],"state":{})"),
                            "2:34: error: ", "the state has no 'description'"},
                    Mistake{"WhoseExampleHasAnotherForm",
                            document(R"("version":1,"actions":[],"state":{"description":"D",
"form":{"type":"string"},"examples":[7]})"),
                            "3:38: error: ", "the whole: expected a string, found 7"},
                    Mistake{"WhoseExamplesAreNoList",
                            document(R"("version":1,"actions":[],"state":{"description":"D",
"form":{"type":"string"},"examples":{"a":"b"}})"),
                            "3:37: error: ", "'examples' is an array of states, not {"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    OfAnAction, ADeclaration,
    testing::Values(
        Mistake{"WithoutId", actions(R"({"title":"A","description":"D"})"),
                "2:24: error: ", "an action has no 'id'"},
        Mistake{"WithABlankInItsId", actions(R"({"id":"a b","title":"A","description":"D"})"),
                "2:30: error: ", "'id' is a text without blanks"},
        Mistake{"WithTheIdOfTheStateRequest",
                actions(R"({"id":"getAppContext","title":"A","description":"D"})"),
                "2:30: error: ", "'getAppContext' asks for the state"},
        Mistake{"DeclaredTwice",
                actions("{\"id\":\"a\",\"title\":\"A\",\"description\":\"D\"},\n"
                        "{\"id\":\"a\",\"title\":\"A\",\"description\":\"D\"}"),
                "3:7: error: ", "'a' is declared twice"},
        Mistake{"ThatReadsAndDestroys",
                action(R"("readOnly":true,"destructive":true,"confirm":true)"),
                "3:32: error: ", "an action that only reads destroys nothing"},
        Mistake{"ThatDestroysUnasked", action(R"("destructive":true)"),
                "3:16: warning: ", "say with 'confirm'"},
        Mistake{"WithAWordForABoolean", action(R"("readOnly":"yes")"),
                "3:13: error: ", "'readOnly' is true or false, not \"yes\""},
        Mistake{"WhoseExampleIsNoObject", action(R"("examples":[1])"),
                "3:13: error: ", "'examples' is an array of objects"},
        Mistake{"WhoseExamplesAreNoList", action(R"("examples":true)"), "3:13: error: ",
                "'examples' is an array of objects, each the parameters of one call, not true"},
        Mistake{"WithAnExampleAndNoParameters", action(R"("examples":[{"x":1}])"),
                "3:14: error: ", "the action declares none"},
        Mistake{"WhoseUtteranceNamesNoParameter", action(R"("utterances":["do {what}"])"),
                "3:16: error: ", "'{what}' names no parameter"},
        Mistake{"WhoseUtteranceDoesNotEndItsBrace", action(R"("utterances":["do {what"])"),
                "3:16: error: ", "names no parameter"},
        Mistake{"WithAnUnknownKeyword", action(R"("utterence":[])"), "3:2: error: ",
                "unknown keyword 'utterence' in an action, did you mean 'utterances'?"}),
    kNameOf);

INSTANTIATE_TEST_SUITE_P(
    OfParameters, ADeclaration,
    testing::Values(
        Mistake{"WithoutType", parameters("{}"), "3:15: error: ", "a form has no 'type'"},
        Mistake{"OfAnUnknownType", parameters(R"({"type":"objekt"})"),
                "3:23: error: ", "'type' is one of string, number"},
        Mistake{"ThatAreNoObject", parameters(R"({"type":"string"})"),
                "3:23: error: ", "parameters are an object, not \"string\""},
        Mistake{"WithAnUnknownKeyword", parameters(R"({"type":"object","oneOf":[]})"),
                "3:32: error: ", "unknown keyword 'oneOf' in a form"},
        Mistake{"ThatRequireWhatIsNotThere",
                parameters(R"({"type":"object","properties":{},"required":["x"]})"),
                "3:60: error: ", "'x' is required and not among the properties"},
        Mistake{"WithAnObjectAmongThem", parameter(R"("type":"object")"),
                "4:1: error: ", "parameters are flat: 'p'"},
        Mistake{"WithAnArrayOfArrays", parameter(R"("type":"array","items":{"type":"array"})"),
                "4:1: error: ", "parameters are flat: 'p'"},
        Mistake{"WithoutDescription",
                parameters(R"({"type":"object","properties":{"p":{"type":"string"}}})"),
                "3:50: warning: ", "'p' has no 'description'"},
        Mistake{"WithAKeywordOfAnotherType", parameter(R"("type":"string","minimum":1)"),
                "4:36: error: ", "unknown keyword 'minimum'"},
        Mistake{"WithoutAnythingBetweenTheirBounds",
                parameter(R"("type":"integer","minimum":2,"maximum":1)"),
                "4:47: error: ", "'minimum' is above 'maximum'"},
        Mistake{"WithANegativeLength", parameter(R"("type":"string","minLength":-1)"),
                "4:48: error: ", "'minLength' is a whole number"},
        Mistake{"WithAStepOfNothing", parameter(R"("type":"number","multipleOf":0)"),
                "4:49: error: ", "'multipleOf' is a number above 0"},
        Mistake{"WithoutChoice", parameter(R"("type":"string","enum":[])"),
                "4:43: error: ", "'enum' is an array of at least one value"},
        Mistake{"WhoseChoiceHasAnotherType", parameter(R"("type":"string","enum":["a",7])"),
                "4:48: error: ", "expected a string, found 7"},
        Mistake{"WhoseDefaultIsNoChoice",
                parameter(R"("type":"string","enum":["a"],"default":"b")"),
                "4:59: error: ", R"(expected one of ["a"], found "b")"},
        Mistake{"WhoseExampleIsWrong",
                action(R"("parameters":{"type":"object","required":["p"],"properties":{"p":
{"description":"P","type":"string"}}},"examples":[{"p":1}])"),
                "4:51: error: ", "/p: expected a string, found 1"}),
    kNameOf);

TEST_P(ADeclaration, IsNamedWithItsPlace) {
  const Findings findings = parse(GetParam().text).findings;

  ASSERT_FALSE(findings.empty());
  EXPECT_THAT(findings[0].toString(),
              AllOf(StartsWith(GetParam().place), HasSubstr(GetParam().message)));
}

TEST(AReading, WithAnErrorCannotBeUsed) {
  const Reading reading = parse(action(R"("readOnly":1)"));

  EXPECT_FALSE(reading.isUsable());
  EXPECT_TRUE(reading.declarations.actions.empty());
}

TEST(AReading, WithAWarningCanBeUsed) {
  EXPECT_TRUE(parse(action(R"("destructive":true)")).isUsable());
}

TEST(AReading, NamesAllThatIsWrongInTheOrderOfTheText) {
  const Findings findings =
      parse(document("\"version\":2,\n\"actions\":[7,\n\"x\"],\n\"more\":1")).findings;

  ASSERT_EQ(findings.size(), 4U);
  for (std::size_t i = 0; i < findings.size(); ++i) {
    EXPECT_EQ(findings[i].position.line, i + 2);
  }
}

TEST(AReading, EndsInTimeForManyMembers) {
  std::string many = "{";
  for (int i = 0; i < 60000; ++i) {
    many += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":1";
  }

  EXPECT_GT(parse(many + "}").findings.size(), 1000U);
}

} // namespace
} // namespace norix::assistant::actions
