// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/nearest.h"

#include <gtest/gtest.h>

namespace norix::assistant::actions {
namespace {

const std::vector<std::string> kKnown{"minimum", "maximum", "type"};

TEST(TheNearestName, IsTheOneWithAFewOtherLetters) {
  EXPECT_EQ(nearest("maximun", kKnown), "maximum");
  EXPECT_EQ(nearest("mininum", kKnown), "minimum");
  EXPECT_EQ(nearest("typ", kKnown), "type");
}

TEST(TheNearestName, IsNoneWhenAllAreFar) {
  EXPECT_EQ(nearest("pattern", kKnown), "");
  EXPECT_EQ(nearest("", kKnown), "");
  EXPECT_EQ(nearest(std::string(100000, 'm'), kKnown), "");
}

TEST(ASuggestion, EndsASentence) {
  EXPECT_EQ(suggestion("tipe", kKnown), ", did you mean 'type'?");
  EXPECT_EQ(suggestion("pattern", kKnown), "");
}

} // namespace
} // namespace norix::assistant::actions
