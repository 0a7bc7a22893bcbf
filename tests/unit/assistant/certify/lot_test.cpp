// SPDX-License-Identifier: Apache-2.0
//
// Parameters drawn by lot, and how those that fail are made smaller.
#include "assistant/actions/check.h"
#include "assistant/certify/Generator.h"
#include "assistant/certify/shrink.h"
#include "assistant/certify/simplest.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace norix::assistant::certify {
namespace {

using actions::Json;

const Json kForm = Json::parse(R"({
  "type": "object",
  "properties": {
    "level": {"type": "integer", "minimum": -3, "maximum": 100},
    "name": {"type": "string", "minLength": 2},
    "days": {"type": "array", "items": {"type": "string", "enum": ["Mo", "Tu"]}, "minItems": 1}
  },
  "required": ["level", "days"],
  "additionalProperties": false
})");

std::vector<std::string> draw(std::uint64_t seed, int count = 200) {
  Generator generator(seed);
  std::vector<std::string> drawn;
  for (int i = 0; i < count; ++i) {
    drawn.push_back(generator.params(kForm));
  }
  return drawn;
}

bool hasForm(const std::string &params) {
  const Json value = Json::parse(params, nullptr, false);
  return value.is_object() && actions::check(kForm, value).empty();
}

TEST(TheGenerator, DrawsTheSameForTheSameSeed) {
  EXPECT_EQ(draw(7), draw(7));
  EXPECT_NE(draw(7), draw(8));
}

TEST(TheGenerator, DrawsWhatHasTheFormAndMoreThatHasNot) {
  const std::vector<std::string> drawn = draw(1);

  const auto right = std::count_if(drawn.begin(), drawn.end(), hasForm);

  EXPECT_GT(right, 40);
  EXPECT_LT(right, 120);
}

TEST(TheGenerator, DrawsTextsThatAreNotJsonToo) {
  const std::vector<std::string> drawn = draw(1);

  EXPECT_TRUE(std::any_of(drawn.begin(), drawn.end(),
                          [](const std::string &text) { return !Json::accept(text); }));
}

TEST(TheGenerator, DrawsNothingThatEndsAtANul) {
  for (const std::string &text : draw(3, 2000)) {
    ASSERT_EQ(text.find('\0'), std::string::npos);
  }
}

struct SimplestRow {
  const char *form;
  const char *value;
};

TEST(TheSimplestValue, HasTheForm) {
  const SimplestRow rows[] = {
      {R"({"type": "integer"})", "0"},
      {R"({"type": "integer", "minimum": 3})", "3"},
      {R"({"type": "integer", "exclusiveMinimum": 3, "multipleOf": 5})", "5"},
      {R"({"type": "integer", "maximum": -2})", "-2"},
      {R"({"type": "integer", "exclusiveMaximum": -2})", "-3"},
      {R"({"type": "number", "minimum": 0.25, "multipleOf": 0.25})", "0.25"},
      {R"({"type": "boolean"})", "false"},
      {R"({"type": "string", "minLength": 3})", R"("aaa")"},
      {R"({"type": "string", "enum": ["x", "y"]})", R"("x")"},
      {R"({"type": "string", "const": "z"})", R"("z")"},
      {R"({"type": "array", "items": {"type": "boolean"}, "minItems": 2})", "[false,false]"},
      {R"({"type": "object", "properties": {"a": {"type": "integer"}, "b": {"type": "string"}},
           "required": ["b"]})",
       R"({"b":""})"},
      {"{}", "{}"}};
  for (const SimplestRow &row : rows) {
    const Json form = Json::parse(row.form);

    EXPECT_EQ(simplest(form), Json::parse(row.value)) << row.form;
    EXPECT_TRUE(form.empty() || actions::check(form, simplest(form)).empty()) << row.form;
  }
}

struct ShrinkRow {
  const char *failing;
  /// What a text has to contain to fail.
  const char *culprit;
  const char *smallest;
};

TEST(Shrinking, FindsTheSmallestTextThatFails) {
  const ShrinkRow rows[] = {
      {R"({"a":1,"b":[1,2,{"c":"needle in hay"}],"d":null})", "needle",
       R"({"b":[{"c":"needle"}]})"},
      {R"({"level":-1000000000,"name":"x"})", R"("level":-)", R"({"level":-1})"},
      {R"({"level":100,"name":"x"})", "level", R"({"level":0})"},
      {R"(not JSON {"a":)", "{", "{"},
  };
  for (const ShrinkRow &row : rows) {
    const auto fails = [&row](const std::string &text) {
      return text.find(row.culprit) != std::string::npos;
    };

    EXPECT_EQ(shrink(row.failing, fails, 1000), row.smallest);
  }
}

TEST(Shrinking, EndsAfterSoManyAttempts) {
  int attempts = 0;

  const std::string text = shrink(
      std::string(1000, 'x'),
      [&attempts](const std::string &) {
        ++attempts;
        return false;
      },
      10);

  EXPECT_EQ(attempts, 10);
  EXPECT_EQ(text, std::string(1000, 'x'));
}

} // namespace
} // namespace norix::assistant::certify
