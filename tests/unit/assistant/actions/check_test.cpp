// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/check.h"

#include <gmock/gmock.h>

namespace norix::assistant::actions {
namespace {

using testing::IsEmpty;

struct Check {
  const char *name;
  const char *form;
  const char *value;
  const char *violation; // Empty when the value has the form.
};

void PrintTo(const Check &tried, std::ostream *out) {
  *out << tried.name;
}

class AForm : public testing::TestWithParam<Check> {};

constexpr const char *kVolume = R"({"type":"object","properties":{"volume":{"type":"integer",
  "minimum":0,"maximum":100}},"required":["volume"],"additionalProperties":false})";

INSTANTIATE_TEST_SUITE_P(
    , AForm,
    testing::Values(
        Check{"TakesWhatItDescribes", kVolume, R"({"volume":40})", ""},
        Check{"NamesWhatIsMissing", kVolume, "{}", "/volume: expected a value, found nothing"},
        Check{"NamesAWrongType", kVolume, R"({"volume":"loud"})",
              R"(/volume: expected an integer, found "loud")"},
        Check{"NamesANumberThatIsTooLarge", kVolume, R"({"volume":400})",
              "/volume: expected a number of at most 100, found 400"},
        Check{"NamesANumberThatIsTooSmall", kVolume, R"({"volume":-1})",
              "/volume: expected a number of at least 0, found -1"},
        Check{"TakesAWholeNumberWithAFraction", kVolume, R"({"volume":5.0})", ""},
        Check{"RefusesABrokenNumberForAnInteger", kVolume, R"({"volume":5.5})",
              "/volume: expected an integer, found 5.5"},
        Check{"NamesAMemberThatIsNotDeclared", kVolume, R"({"volume":1,"a/b":2})",
              "/a~1b: expected nothing of that name, found 2"},
        Check{"TakesFurtherMembersUnlessClosed", R"({"type":"object"})", R"({"more":1})", ""},
        Check{"NamesTheWholeValue", kVolume, "[]", "the whole: expected an object, found []"},
        Check{"TakesOneOfItsChoices", R"({"type":"string","enum":["on","off"]})", R"("off")", ""},
        Check{"NamesItsChoices", R"({"type":"string","enum":["on","off"]})", R"("dim")",
              R"(the whole: expected one of ["on","off"], found "dim")"},
        Check{"NamesItsOnlyValue", R"({"type":"integer","const":3})", "4",
              "the whole: expected 3, found 4"},
        Check{"CountsCharactersAndNotBytes", R"({"type":"string","maxLength":3})", R"("äöü")", ""},
        Check{"NamesATextThatIsTooLong", R"({"type":"string","maxLength":1})", R"("ab")",
              R"(the whole: expected a text of at most 1 character, found "ab")"},
        Check{"NamesATextThatIsTooShort", R"({"type":"string","minLength":2})", R"("a")",
              R"(the whole: expected a text of at least 2 characters, found "a")"},
        Check{"NamesANumberAtAnExclusiveLimit", R"({"type":"number","exclusiveMinimum":0})", "0",
              "the whole: expected a number above 0, found 0"},
        Check{"NamesANumberAtTheOtherExclusiveLimit", R"({"type":"number","exclusiveMaximum":1})",
              "1", "the whole: expected a number below 1, found 1"},
        Check{"TakesAMultipleThatIsNoBinaryFraction", R"({"type":"number","multipleOf":0.1})",
              "0.3", ""},
        Check{"NamesWhatIsNoMultiple", R"({"type":"integer","multipleOf":5})", "7",
              "the whole: expected a number that is a multiple of 5, found 7"},
        Check{"ComparesTheLargestIntegersExactly",
              R"({"type":"integer","maximum":18446744073709551614})", "18446744073709551615",
              "the whole: expected a number of at most 18446744073709551614, found "
              "18446744073709551615"},
        Check{"NamesAnElement", R"({"type":"array","items":{"type":"boolean"}})", "[true,1]",
              "/1: expected a boolean, found 1"},
        Check{"NamesAnArrayThatIsTooShort", R"({"type":"array","minItems":1})", "[]",
              "the whole: expected at least 1 element, found []"},
        Check{"NamesAnArrayThatIsTooLong", R"({"type":"array","maxItems":1})", "[1,2]",
              "the whole: expected at most 1 element, found [1,2]"},
        Check{"NamesAnElementThatIsThereTwice", R"({"type":"array","uniqueItems":true})",
              R"([{"a":1,"b":2},{"b":2,"a":1}])",
              R"(/1: expected an element that is not there before, found {"b":2,"a":1})"}),
    [](const auto &tried) { return tried.param.name; });

TEST_P(AForm, IsCompared) {
  const auto violations = check(Json::parse(GetParam().form), Json::parse(GetParam().value));

  if (*GetParam().violation == '\0') {
    EXPECT_THAT(violations, IsEmpty());
  } else {
    ASSERT_EQ(violations.size(), 1U);
    EXPECT_EQ(violations[0].toString(), GetParam().violation);
  }
}

TEST(TheCheck, NamesEveryViolation) {
  const Json form = Json::parse(R"({"type":"object","required":["a","b"]})");

  EXPECT_EQ(check(form, Json::object()).size(), 2U);
}

TEST(TheCheck, EndsAfterAHundredViolations) {
  const Json form = Json::parse(R"({"type":"array","items":{"type":"string"}})");

  EXPECT_EQ(check(form, std::vector<int>(1000, 7)).size(), 100U);
}

TEST(TheCheck, ShowsOnlyTheBeginningOfALongValue) {
  const auto violations = check({{"type", "integer"}}, std::string(1000, 'x'));

  EXPECT_EQ(violations.at(0).found, "\"" + std::string(59, 'x') + "…");
}

} // namespace
} // namespace norix::assistant::actions
