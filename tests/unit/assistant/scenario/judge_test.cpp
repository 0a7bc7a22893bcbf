// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/difference.h"
#include "assistant/scenario/judge.h"

#include <gmock/gmock.h>

namespace norix::assistant::scenario {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// What is said of an answer that came after 50 ms.
std::vector<report::Message> judged(const Expectation &expectation, const std::string &text,
                                    const std::string &outcome = "answered") {
  const Variables variables({{"volume", 40}});
  return judge(expectation, Observed{outcome, text, 100000000, 150000000}, variables);
}

struct Judgement {
  std::string name;
  void (*expect)(Expectation &);
  std::string right;
  std::string wrong;
  std::string message;
};

void PrintTo(const Judgement &judgement, std::ostream *out) {
  *out << judgement.name;
}

const std::vector<Judgement> kJudgements = {
    {"TheText", [](Expectation &e) { e.text = "The volume is ${volume}"; }, "The volume is 40",
     "The volume is 4", "the text is another one"},
    {"APart", [](Expectation &e) { e.contains = {"is ${volume}"}; }, "it is 40!", "it is 4",
     "does not contain 'is 40'"},
    {"EveryPart",
     [](Expectation &e) {
       e.contains = {"a", "b"};
     },
     "ba", "a", "does not contain 'b'"},
    {"AnExpression", [](Expectation &e) { e.matches = {"^v.*\\d+$"}; }, "volume 40", "volume",
     "does not match '^v.*\\d+$'"},
    {"AValue",
     [](Expectation &e) {
       e.json = {{"/v", "${volume}"}};
     },
     R"({"v":40})", R"({"v":"40"})", "another value than expected (-) at /v"},
    {"ANumberHoweverWritten",
     [](Expectation &e) {
       e.json = {{"/v", 40.0}};
     },
     R"({"v":40})", R"({"v":41})", "another value"},
    {"AnObjectInAnyOrder",
     [](Expectation &e) {
       e.json = {{"", Json::parse(R"({"a":1,"b":2})")}};
     },
     R"({"b":2,"a":1})", R"({"b":2})", "another value"},
    {"APlaceThatIsThere",
     [](Expectation &e) {
       e.json = {{"/a/0", nullptr}};
     },
     R"({"a":[null]})", R"({"a":[]})", "nothing at /a/0"},
    {"AnElementOfAList",
     [](Expectation &e) {
       e.json = {{"/99999999999999999999", 1}};
     },
     R"({"99999999999999999999":1})", "[]", "nothing at /99999999999999999999"},
    {"ValuesThatTheStackHasRoomFor",
     [](Expectation &e) {
       e.json = {{"/0", 5}};
     },
     "[5]", std::string(1000000, '[') + std::string(1000000, ']'), "is not JSON, or too deep"},
    {"AnythingThatIsJson",
     [](Expectation &e) {
       e.json = {{"", 5}};
     },
     "5", "5 or so", "the answer is not JSON"}};

class AnExpectationOf : public testing::TestWithParam<Judgement> {};

TEST_P(AnExpectationOf, IsMetOrNot) {
  Expectation expectation;
  GetParam().expect(expectation);

  EXPECT_THAT(judged(expectation, GetParam().right), IsEmpty());
  const auto messages = judged(expectation, GetParam().wrong);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_THAT(messages[0].text, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(Of, AnExpectationOf, testing::ValuesIn(kJudgements),
                         [](const auto &chosen) { return chosen.param.name; });

TEST(AnExpectation, OfAnotherOutcomeSaysWhatCameInstead) {
  Expectation expectation;
  expectation.text = "Playing";

  const auto messages = judged(expectation, "no callback", "action-not-registered");

  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].text, "expected 'answered', got 'action-not-registered': no callback");
}

TEST(AnExpectation, OfATimeHasBothBounds) {
  Expectation expectation;
  expectation.within = 0.06;
  expectation.after = 0.04;
  EXPECT_THAT(judged(expectation, ""), IsEmpty());

  expectation.within = 0.04;
  expectation.after = 0.06;
  const auto messages = judged(expectation, "");
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].text, "it took 50.0 ms, longer than the 40.0 ms allowed");
  EXPECT_EQ(messages[1].text, "it took only 50.0 ms, shorter than the 60.0 ms expected");
}

TEST(ACapture, KeepsTheTextAPlaceOrAGroup) {
  Variables variables;
  EXPECT_THAT(capture({{"all", "", ""}, {"place", "/a/1", ""}, {"group", "", "a\":\\[(.)"}},
                      R"({"a":[1,{}]})", variables),
              IsEmpty());

  EXPECT_EQ(variables.fill(Json("${all}")), R"({"a":[1,{}]})");
  EXPECT_EQ(variables.fill(Json("${place}")), Json::object());
  EXPECT_EQ(variables.fill(Json("${group}")), "1");
}

TEST(ACapture, SaysWhyThereIsNothingToKeep) {
  Variables variables;
  const auto messages = capture({{"a", "/a", ""}, {"b", "", "x(.)"}}, R"({"b":1})", variables);

  ASSERT_EQ(messages.size(), 2U);
  EXPECT_THAT(messages[0].text, HasSubstr("'a' cannot be captured"));
  EXPECT_THAT(messages[0].text, HasSubstr("nothing at /a"));
  EXPECT_THAT(messages[1].text, HasSubstr("does not match 'x(.)'"));
  EXPECT_THAT(capture({{"a", "/a", ""}}, "no JSON", variables)[0].text, HasSubstr("not JSON"));
}

TEST(AnExpectation, QuotesWholeCharactersOfALongAnswer) {
  Expectation expectation;
  expectation.contains = {"b"};
  std::string answer = "a";
  for (int i = 0; i < 500; ++i) {
    answer += "é";
  }

  EXPECT_THAT(judged(expectation, answer).at(0).text, HasSubstr("é…'"));
}

TEST(ADifference, MarksTheLinesThatDiffer) {
  EXPECT_EQ(difference("a\nb\nc", "a\nx\nc"), " a\n-b\n+x\n c\n");
}

TEST(ADifference, ComparesJsonMemberByMember) {
  EXPECT_EQ(difference(R"({"b":1,"a":2})", R"({"a":2,"b":3})"),
            " {\n   \"a\": 2,\n-  \"b\": 1\n+  \"b\": 3\n }\n");
}

TEST(ADifference, ShowsALineEndThatIsMissing) {
  EXPECT_EQ(difference("a\n", "a"), "-\"a\\n\"\n+\"a\"\n");
}

TEST(ADifference, TakesDeepJsonAsText) {
  const std::string deep = std::string(1000000, '[') + std::string(1000000, ']');
  EXPECT_EQ(difference("[]", deep), "-[]\n+" + deep + "\n");
}

TEST(ADifference, OfLongTextsIsNotComputed) {
  std::string expected;
  std::string actual;
  for (int i = 0; i < 5000; ++i) {
    expected += "a\n";
    actual += "b\n";
  }
  EXPECT_EQ(difference(expected, actual).size(), 2 * (expected.size() + 5000));
}

} // namespace
} // namespace norix::assistant::scenario
