// SPDX-License-Identifier: Apache-2.0
#include "unit/assistant/mcp/Desk.h"

#include "assistant/mcp/names.h"

#include <gtest/gtest.h>

#include <regex>

using namespace norix::assistant::mcp;
using namespace norix::assistant::mcp::testing;

namespace {

TEST(AToolName, IsMadeOfWhatEveryClientTakes) {
  Names names;
  const std::regex taken("[a-zA-Z0-9_]{1,40}");
  for (const char *action :
       {"play", "a.b-c/d", "m\xc3\xbcsic", "", "getAppContextGetAppContextGetAppContext"}) {
    EXPECT_TRUE(std::regex_match(names.make("org.example.my-app", action), taken)) << action;
  }
}

TEST(AToolName, ThatIsTakenIsNumbered) {
  Names names;

  EXPECT_EQ(names.make("org.a.player", "play"), "player_play");
  EXPECT_EQ(names.make("org.b.player", "play"), "player_play_2");
  EXPECT_EQ(names.make("org.c.player", "play"), "player_play_3");
}

TEST(AToolName, ThatIsTooLongStaysApartFromItsLike) {
  Names names;
  const std::string action(60, 'a');
  const std::string first = names.make("org.a.player", action);
  const std::string second = names.make("org.a.player", action + "b");

  EXPECT_EQ(first.size(), 40U);
  EXPECT_EQ(second.size(), 40U);
  EXPECT_NE(first, second);
}

Json toolNamed(const Catalogue &catalogue, const std::string &name) {
  for (const Tool &tool : catalogue.tools) {
    if (tool.name == name) {
      return tool.descriptor;
    }
  }
  return nullptr;
}

TEST(TheCatalogue, WritesAllFourHintsOfEveryTool) {
  for (const Tool &tool : playerCatalogue().tools) {
    for (const char *hint :
         {"readOnlyHint", "destructiveHint", "idempotentHint", "openWorldHint"}) {
      EXPECT_TRUE(tool.descriptor.at("annotations").at(hint).is_boolean()) << tool.name << hint;
    }
  }
}

TEST(TheCatalogue, SaysWhatOnlyReadsAndWhatDestroys) {
  const Catalogue catalogue = playerCatalogue();

  EXPECT_EQ(toolNamed(catalogue, "player_state").at("annotations").at("readOnlyHint"), true);
  EXPECT_EQ(toolNamed(catalogue, "player_play").at("annotations").at("destructiveHint"), false);
  EXPECT_EQ(toolNamed(catalogue, "player_wipe").at("annotations").at("destructiveHint"), true);
}

TEST(TheCatalogue, GivesToolsWithoutParametersAnObjectThatTakesNone) {
  EXPECT_EQ(toLine(toolNamed(playerCatalogue(), "player_play").at("inputSchema")),
            R"({"type":"object","additionalProperties":false})");
}

TEST(TheCatalogue, IsTheSameEveryTime) {
  const Catalogue first = playerCatalogue();
  const Catalogue second = playerCatalogue();

  ASSERT_EQ(first.tools.size(), second.tools.size());
  for (std::size_t index = 0; index < first.tools.size(); ++index) {
    EXPECT_EQ(toLine(first.tools[index].descriptor), toLine(second.tools[index].descriptor));
  }
}

TEST(TheCatalogue, OffersOnlyWhatReadsWhenAskedTo) {
  const Catalogue catalogue = makeCatalogue({{"org.example.silent", std::nullopt}}, true);

  ASSERT_EQ(catalogue.tools.size(), 1U);
  EXPECT_EQ(catalogue.tools.front().name, "silent_state");
}

} // namespace
