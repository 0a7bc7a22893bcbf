// SPDX-License-Identifier: Apache-2.0
//
// norix/json.hpp: typed parameters, and states and answers as JSON.
#include "VoiceTest.h"

#include <norix/json.hpp>

#include <limits>

namespace {

using fake::ResponsesAre;
using norix::Error;
using norix::param;

enum class Repeat { Off, One, All };

// How an action answers, by its parameters alone.
class AnActionWithParameters : public VoiceTest {
protected:
  // The result of a request with these parameters.
  std::string resultOf(const std::string &params) {
    fake::Contents request = fake::actionRequest("play", 1);
    request.at(2) = fake::text("actionParams", params);
    assistant.sends(request);
    return assistant.responses().back().at(1).values.at(0);
  }

  // The callable writes down what it was called with.
  template <typename... Values>
  void takes(norix::Param<Values>... params) {
    voice->onAction("play", std::move(params)...,
                    [](const Values &...values) { return nlohmann::json{values...}; });
  }
};

TEST_F(AnActionWithParameters, IsCalledWithItsValues) {
  voice->onAction(
      "play", param<std::string>("title"), param<int>("volume").range(0, 100),
      [](const std::string &title, int volume) { return title + " at " + std::to_string(volume); });

  EXPECT_EQ(resultOf(R"({"volume":40,"title":"Rain on Tin"})"), "Rain on Tin at 40");
}

TEST_F(AnActionWithParameters, MayAnswerLater) {
  voice->onAction("play", param<int>("volume"), [this](norix::Request request, int volume) {
    const fake::OutsideLibrary outside;
    request.answerIfForgotten(std::to_string(volume));
    kept.push_back(std::move(request));
  });
  fake::Contents request = fake::actionRequest("play", 1);
  request.at(2) = fake::text("actionParams", R"({"volume":40})");
  assistant.sends(request);

  kept.clear();

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("40", 1)}));
}

TEST_F(AnActionWithParameters, AnswersForWrongOnesWithoutBeingCalled) {
  bool isCalled = false;
  voice->onAction("play", param<int>("volume").range(0, 100), [&isCalled](int /*volume*/) {
    isCalled = true;
    return "";
  });

  EXPECT_EQ(resultOf(R"({"volume":"loud"})"),
            R"(Error: "volume" of play has to be a whole number from 0 to 100, not "loud")");
  EXPECT_FALSE(isCalled);
}

struct Case {
  const char *name;
  const char *params;
  const char *result;
};

void PrintTo(const Case &tested, std::ostream *out) {
  *out << tested.name;
}

std::string nameOf(const testing::TestParamInfo<Case> &tested) {
  return tested.param.name;
}

class AWholeNumber : public AnActionWithParameters, public testing::WithParamInterface<Case> {};

TEST_P(AWholeNumber, IsRead) {
  takes(param<int>("n").range(-5, 100));

  EXPECT_EQ(resultOf(GetParam().params), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    , AWholeNumber,
    testing::Values(
        Case{"Least", R"({"n":-5})", "[-5]"}, Case{"Greatest", R"({"n":100})", "[100]"},
        Case{"WrittenWithAPoint", R"({"n":40.0})", "[40]"},
        Case{"BesideOthers", R"({"m":[1],"n":40})", "[40]"},
        Case{"TooSmall", R"({"n":-6})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not -6)"},
        Case{"TooGreat", R"({"n":101})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not 101)"},
        Case{"MuchTooGreat", R"({"n":1e300})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not 1e+300)"},
        Case{"ThatWouldWrapAround", R"({"n":4294967300})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not 4294967300)"},
        Case{"WithAFraction", R"({"n":1.5})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not 1.5)"},
        Case{"AsAText", R"({"n":"40"})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not "40")"},
        Case{"AsATruth", R"({"n":true})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not true)"},
        Case{"AsNull", R"({"n":null})",
             R"(Error: "n" of play has to be a whole number from -5 to 100, not null)"},
        Case{"Missing", R"({"m":40})",
             R"(Error: "n" of play is missing; it has to be a whole number from -5 to 100)"},
        Case{"InNoParameters", "",
             R"(Error: "n" of play is missing; it has to be a whole number from -5 to 100)"},
        Case{"InAnArray", "[40]",
             R"(Error: the parameters of play have to be a JSON object with "n", a whole number )"
             R"(from -5 to 100, not [40])"},
        Case{"InNoJson", "volume=40",
             R"(Error: the parameters of play have to be a JSON object with "n", a whole number )"
             R"(from -5 to 100, not "volume=40")"}),
    nameOf);

class AText : public AnActionWithParameters, public testing::WithParamInterface<Case> {};

TEST_P(AText, IsRead) {
  takes(param<std::string>("t").length(2, 3));

  EXPECT_EQ(resultOf(GetParam().params), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    , AText,
    testing::Values(Case{"Shortest", R"({"t":"ab"})", R"(["ab"])"},
                    Case{"OfCharactersThatTakeSeveralBytes", R"({"t":"äöü"})", R"(["äöü"])"},
                    Case{"TooShort", R"({"t":"ä"})",
                         R"(Error: "t" of play has to be a text of 2 to 3 characters, not "ä")"},
                    Case{"TooLong", R"({"t":"abcd"})",
                         R"(Error: "t" of play has to be a text of 2 to 3 characters, not "abcd")"},
                    Case{"ThatIsANumber", R"({"t":12})",
                         R"(Error: "t" of play has to be a text of 2 to 3 characters, not 12)"}),
    nameOf);

class AList : public AnActionWithParameters, public testing::WithParamInterface<Case> {};

TEST_P(AList, IsRead) {
  takes(param<std::vector<int>>("l").range(1, 9).length(1, 2));

  EXPECT_EQ(resultOf(GetParam().params), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    , AList,
    testing::Values(Case{"OfTwo", R"({"l":[1,9]})", "[[1,9]]"},
                    Case{"TooShort", R"({"l":[]})",
                         "Error: \"l\" of play has to be a list of 1 to 2 elements, each a whole "
                         "number from 1 to 9, not []"},
                    Case{"WithAWrongElement", R"({"l":[1,10]})",
                         "Error: \"l\" of play has to be a list of 1 to 2 elements, each a whole "
                         "number from 1 to 9, not [1,10]"},
                    Case{"ThatIsNone", R"({"l":1})",
                         "Error: \"l\" of play has to be a list of 1 to 2 elements, each a whole "
                         "number from 1 to 9, not 1"}),
    nameOf);

TEST_F(AnActionWithParameters, TakesTheNamesOfAnEnumeration) {
  voice->onAction("play",
                  param<Repeat>("repeat").oneOf({{"off", Repeat::Off}, {"all", Repeat::All}}),
                  [](Repeat repeat) { return std::to_string(static_cast<int>(repeat)); });

  EXPECT_EQ(resultOf(R"({"repeat":"all"})"), "2");
  EXPECT_EQ(resultOf(R"({"repeat":"one"})"),
            R"(Error: "repeat" of play has to be one of "off", "all", not "one")");
}

TEST_F(AnActionWithParameters, TakesOneOfSeveralTexts) {
  takes(param<std::string>("genre").oneOf({"jazz", "folk"}));

  EXPECT_EQ(resultOf(R"({"genre":"folk"})"), R"(["folk"])");
  EXPECT_EQ(resultOf(R"({"genre":"Folk"})"),
            R"(Error: "genre" of play has to be one of "jazz", "folk", not "Folk")");
}

TEST_F(AnActionWithParameters, TakesTruths) {
  takes(param<bool>("loud"));

  EXPECT_EQ(resultOf(R"({"loud":true})"), "[true]");
  EXPECT_EQ(resultOf(R"({"loud":1})"), R"(Error: "loud" of play has to be true or false, not 1)");
}

TEST_F(AnActionWithParameters, TakesNumbersWithAFraction) {
  takes(param<double>("speed").range(0.5, 2));

  EXPECT_EQ(resultOf(R"({"speed":2})"), "[2.0]");
  EXPECT_EQ(resultOf(R"({"speed":0.25})"),
            R"(Error: "speed" of play has to be a number from 0.5 to 2.0, not 0.25)");
}

TEST_F(AnActionWithParameters, TakesTheWholeRangeOfAType) {
  takes(param<std::int64_t>("least"), param<std::uint64_t>("greatest"),
        param<std::int8_t>("small"));

  EXPECT_EQ(
      resultOf(R"({"least":-9223372036854775808,"greatest":18446744073709551615,"small":-128})"),
      "[-9223372036854775808,18446744073709551615,-128]");
  EXPECT_EQ(resultOf(R"({"least":0,"greatest":-1,"small":0})"),
            "Error: \"greatest\" of play has to be a whole number from 0 to 18446744073709551615, "
            "not -1");
  EXPECT_EQ(resultOf(R"({"least":0,"greatest":1,"small":128})"),
            "Error: \"small\" of play has to be a whole number from -128 to 127, not 128");
}

TEST_F(AnActionWithParameters, FillsInWhatDoesNotCome) {
  takes(param<int>("volume").orElse(40), param<std::string>("title").orElse("any"));

  EXPECT_EQ(resultOf(R"({"title":"Rain on Tin"})"), R"([40,"Rain on Tin"])");
  EXPECT_EQ(resultOf(""), R"([40,"any"])");
}

TEST_F(AnActionWithParameters, TakesAnOptionalOneOrNone) {
  voice->onAction("play", param<std::optional<int>>("volume").range(0, 100),
                  [](std::optional<int> volume) { return volume ? "some" : "none"; });

  EXPECT_EQ(resultOf(R"({"volume":40})"), "some");
  EXPECT_EQ(resultOf("{}"), "none");
  EXPECT_EQ(resultOf(R"({"volume":101})"),
            R"(Error: "volume" of play has to be a whole number from 0 to 100, not 101)");
}

TEST_F(AnActionWithParameters, ShortensWhatCameAtACharacter) {
  takes(param<int>("n").range(0, 1));

  // A quote, then characters of three bytes: the 60th byte is in the middle of one.
  std::string many;
  for (int i = 0; i < 40; ++i) {
    many += "€";
  }
  std::string shown;
  for (int i = 0; i < 19; ++i) {
    shown += "€";
  }
  EXPECT_EQ(resultOf("{\"n\":\"" + many + "\"}"),
            "Error: \"n\" of play has to be a whole number from 0 to 1, not \"" + shown + "…");
}

TEST_F(AnActionWithParameters, AnswersForBytesThatAreNoText) {
  takes(param<int>("n").range(0, 1));

  EXPECT_EQ(resultOf("\xff"),
            "Error: the parameters of play have to be a JSON object with \"n\", a "
            "whole number from 0 to 1, not \"\xEF\xBF\xBD\"");
}

// Registrations that could never be met.

std::string complaintOf(const std::function<void()> &registers) {
  try {
    registers();
  } catch (const Error &error) {
    EXPECT_EQ(error.code(), NORIX_ERROR_INVALID_PARAMETER);
    return error.advice();
  }
  return "none";
}

TEST_F(AnActionWithParameters, IsRefusedWhenNothingLiesWithinItsBounds) {
  EXPECT_EQ(complaintOf([this] { takes(param<int>("n").range(2, 1)); }),
            "the parameter \"n\" can never be right: nothing lies within its bounds");
}

TEST_F(AnActionWithParameters, IsRefusedWhenWhatIsFilledInIsWrong) {
  EXPECT_EQ(complaintOf([this] { takes(param<int>("n").range(1, 2).orElse(3)); }),
            "the parameter \"n\" can never be right: the value of orElse() is not a whole number "
            "from 1 to 2");
}

TEST_F(AnActionWithParameters, IsRefusedWithAnEnumerationWithoutNames) {
  EXPECT_EQ(complaintOf([this] {
              voice->onAction("play", param<Repeat>("repeat"), [](Repeat) { return ""; });
            }),
            "the parameter \"repeat\" can never be right: an enumeration needs oneOf(), with the "
            "name of each value");
}

TEST_F(AnActionWithParameters, IsRefusedWithTheSameNameTwice) {
  EXPECT_EQ(complaintOf([this] { takes(param<int>("n"), param<int>("n")); }),
            "there are two parameters \"n\"");
}

// Answers and states.

struct Song {
  std::string title;
};

void to_json(nlohmann::json &json, const Song &song) {
  json = {{"title", song.title}};
}

using AValue = VoiceTest;

TEST_F(AValue, ThatConvertsToJsonIsAState) {
  voice->onState([] { return Song{"Rain on Tin"}; });

  assistant.asksForState(1);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateAnswer(R"({"title":"Rain on Tin"})", 1)}));
}

TEST_F(AValue, OfJsonIsAnAnswer) {
  voice->onAction("play", [](norix::Request request) {
    request.answer(nlohmann::json{{"title", "Rain on Tin"}});
  });

  assistant.asksForAction("play", 1);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::actionAnswer(R"({"title":"Rain on Tin"})", 1)}));
}

TEST_F(AValue, OfTextIsNotQuoted) {
  voice->onState([] { return std::string("on"); });

  assistant.asksForState(1);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("on", 1)}));
}

TEST_F(AValue, WithBytesThatAreNoTextIsSentAllTheSame) {
  voice->onState([] { return Song{"\xff"}; });

  assistant.asksForState(1);

  EXPECT_THAT(assistant.responses(),
              ResponsesAre({fake::stateAnswer("{\"title\":\"\xEF\xBF\xBD\"}", 1)}));
}

// Declarations.

TEST(Declarations, SayWhatWasRegistered) {
  norix::Assistant declaring = norix::Assistant::declaring();
  declaring.onState([] { return "{}"; },
                    norix::State("What is played").form(R"({"type":"object"})").example("{}"));
  declaring.onAction(
      norix::Action("volume")
          .title("Volume")
          .description("Sets the volume")
          .utterance("volume {level}")
          .example(R"({"level":40})"),
      param<int>("level").range(0, 100).description("In percent"),
      param<std::vector<Repeat>>("modes")
          .oneOf({{"off", Repeat::Off}, {"one", Repeat::One}})
          .length(0, 2)
          .orElse({Repeat::One}),
      param<std::optional<unsigned>>("delay"), param<bool>("now"),
      [](int, const std::vector<Repeat> &, std::optional<unsigned>, bool) { return "done"; });
  declaring.onAction(norix::Action("erase").destructive().confirm(), [] { return "done"; });
  declaring.onAction(norix::Action("title").readOnly(), [] { return "none"; });

  const auto declared = nlohmann::json::parse(declaring.declarations());

  EXPECT_EQ(declared, nlohmann::json::parse(R"({
    "version": 1,
    "state": {"description": "What is played", "form": {"type": "object"}, "examples": [{}]},
    "actions": [
      {"id": "erase", "title": "erase", "description": "erase", "destructive": true,
       "confirm": true},
      {"id": "title", "title": "title", "description": "title", "readOnly": true},
      {"id": "volume", "title": "Volume", "description": "Sets the volume",
       "parameters": {
         "type": "object",
         "properties": {
           "level": {"type": "integer", "minimum": 0, "maximum": 100,
                     "description": "In percent"},
           "modes": {"type": "array", "items": {"type": "string", "enum": ["off", "one"]},
                     "minItems": 0, "maxItems": 2, "default": ["one"]},
           "delay": {"type": "integer", "minimum": 0},
           "now": {"type": "boolean"}},
         "required": ["level", "now"],
         "additionalProperties": false},
       "examples": [{"level": 40}],
       "utterances": ["volume {level}"]}]})"))
      << declared.dump(2);
}

TEST(Declarations, OfAStateTakeItsFormFromParameters) {
  const std::string form =
      norix::formOf(param<bool>("playing"), param<std::optional<int>>("volume").range(0, 100));

  EXPECT_EQ(nlohmann::json::parse(form), nlohmann::json::parse(R"({
    "type": "object",
    "properties": {"playing": {"type": "boolean"},
                   "volume": {"type": "integer", "minimum": 0, "maximum": 100}},
    "required": ["playing"],
    "additionalProperties": false})"));
}

TEST(Declarations, ArePrintedWhenTheProgramWasStartedForThem) {
  const char *arguments[] = {"music", "--norix-declarations"};
  testing::internal::CaptureStdout();

  const bool isDone = norix::printsDeclarations(2, arguments, [](norix::Assistant &declaring) {
    declaring.onAction("play", [] { return ""; });
  });

  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(isDone);
  EXPECT_EQ(nlohmann::json::parse(printed).at("actions").at(0).at("id"), "play");
}

TEST(Declarations, AreNotPrintedOtherwise) {
  const char *arguments[] = {"music", "--other"};

  EXPECT_FALSE(norix::printsDeclarations(
      2, arguments, [](norix::Assistant & /*declaring*/) { FAIL() << "nobody asked"; }));
}

} // namespace
