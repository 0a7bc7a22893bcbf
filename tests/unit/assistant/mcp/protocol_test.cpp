// SPDX-License-Identifier: Apache-2.0
//
// What the server answers to each message of both protocols.
#include "unit/assistant/mcp/Desk.h"

#include "assistant/mcp/versions.h"

#include <gtest/gtest.h>

using namespace norix::assistant::mcp;
using namespace norix::assistant::mcp::testing;

namespace {

TEST(TheHandshake, AnswersAKnownVersionWithItself) {
  for (const char *version : {"2024-11-05", "2025-03-26", "2025-06-18", "2025-11-25"}) {
    Desk desk;
    desk.legacy(1, "initialize", {{"protocolVersion", version}, {"capabilities", Json::object()}});

    EXPECT_EQ(desk.last().at("result").at("protocolVersion"), version);
  }
}

TEST(TheHandshake, AnswersAnUnknownVersionWithTheNewestLegacyOne) {
  Desk desk;
  desk.legacy(1, "initialize", {{"protocolVersion", "1999-01-01"}});

  EXPECT_EQ(desk.last().at("result").at("protocolVersion"), "2025-11-25");
}

TEST(TheHandshake, SaysWhoTheServerIsAndWhatItCanDo) {
  Desk desk;
  desk.legacy(1, "initialize", {{"protocolVersion", "2025-11-25"}});
  const Json result = desk.last().at("result");

  EXPECT_EQ(result.at("serverInfo").at("name"), "norix-assistant");
  EXPECT_EQ(result.at("serverInfo").at("version"), "1.2.3");
  for (const char *capability : {"tools", "resources", "prompts"}) {
    EXPECT_TRUE(result.at("capabilities").contains(capability)) << capability;
  }
}

TEST(BeforeTheHandshake, ARequestWithoutMetaNamesWhatIsMissing) {
  Desk desk;
  desk.legacy(1, "tools/list");
  const Json error = desk.last().at("error");

  EXPECT_EQ(error.at("code"), InvalidParams);
  EXPECT_NE(error.at("message").get<std::string>().find(kModernVersion), std::string::npos);
}

TEST(BeforeTheHandshake, APingIsAnswered) {
  Desk desk;
  desk.legacy(1, "ping");

  EXPECT_EQ(toLine(desk.last()), R"({"jsonrpc":"2.0","id":1,"result":{}})");
}

TEST(AModernRequest, NeedsTheClientsCapabilities) {
  Desk desk;
  desk.legacy(1, "tools/list", {{"_meta", {{kVersionKey, kModernVersion}}}});

  EXPECT_EQ(desk.lastError(), InvalidParams);
}

TEST(AModernRequest, OfAnotherVersionIsToldWhatIsSupported) {
  Desk desk;
  desk.legacy(1, "tools/list",
              {{"_meta", {{kVersionKey, "2099-01-01"}, {kCapabilitiesKey, Json::object()}}}});
  const Json error = desk.last().at("error");

  EXPECT_EQ(error.at("code"), UnsupportedVersion);
  EXPECT_EQ(error.at("data").at("requested"), "2099-01-01");
  EXPECT_EQ(error.at("data").at("supported").at(0), kModernVersion);
}

TEST(AModernRequest, DiscoversTheServerWithoutHandshake) {
  Desk desk;
  desk.modern(1, "server/discover");
  const Json result = desk.last().at("result");

  EXPECT_EQ(result.at("supportedVersions").at(0), kModernVersion);
  EXPECT_EQ(result.at("resultType"), "complete");
  EXPECT_GE(result.at("ttlMs").get<int>(), 0);
  EXPECT_EQ(result.at("cacheScope"), "private");
  EXPECT_EQ(result.at("_meta").at(kServerInfoKey).at("name"), "norix-assistant");
  EXPECT_FALSE(result.at("instructions").get<std::string>().empty());
}

struct Method {
  const char *name;
  int legacy; ///< The error code; 0 for a result.
  int modern;
};

void PrintTo(const Method &row, std::ostream *out) {
  *out << row.name;
}

class AMethod : public ::testing::TestWithParam<Method> {};

TEST_P(AMethod, IsThereInTheProtocolsThatHaveIt) {
  Desk desk;
  desk.handshake();

  desk.legacy(1, GetParam().name, {{"uri", "norix://none"}, {"name", "none"}, {"level", "info"}});
  EXPECT_EQ(desk.lastError(), GetParam().legacy) << "legacy";
  desk.modern(2, GetParam().name,
              {{"uri", "norix://none"}, {"name", "none"}, {"notifications", Json::object()}});
  EXPECT_EQ(desk.lastError(), GetParam().modern) << "modern";
}

INSTANTIATE_TEST_SUITE_P(
    Methods, AMethod,
    ::testing::Values(Method{"ping", 0, MethodNotFound}, Method{"tools/list", 0, 0},
                      Method{"tools/call", InvalidParams, InvalidParams},
                      Method{"resources/list", 0, 0}, Method{"resources/templates/list", 0, 0},
                      Method{"resources/read", ResourceNotFound, InvalidParams},
                      Method{"resources/subscribe", 0, MethodNotFound},
                      Method{"resources/unsubscribe", 0, MethodNotFound},
                      Method{"prompts/list", 0, 0},
                      Method{"prompts/get", InvalidParams, InvalidParams},
                      Method{"logging/setLevel", MethodNotFound, MethodNotFound},
                      Method{"completion/complete", MethodNotFound, MethodNotFound},
                      Method{"server/discover", MethodNotFound, 0},
                      Method{"subscriptions/listen", MethodNotFound, 0},
                      Method{"initialize", InvalidParams, MethodNotFound},
                      Method{"no/such", MethodNotFound, MethodNotFound}),
    [](const auto &row) {
      std::string name = row.param.name;
      std::replace(name.begin(), name.end(), '/', '_');
      return name;
    });

TEST(AModernList, SaysHowLongItMayBeKept) {
  for (const char *method :
       {"tools/list", "resources/list", "resources/templates/list", "prompts/list"}) {
    Desk desk;
    desk.modern(1, method);
    const Json result = desk.last().at("result");

    EXPECT_TRUE(result.at("ttlMs").is_number_integer()) << method;
    EXPECT_EQ(result.at("cacheScope"), "private") << method;
    EXPECT_EQ(result.at("resultType"), "complete") << method;
  }
}

TEST(ALegacyResult, HasNothingOfTheModernProtocol) {
  Desk desk;
  desk.handshake();
  desk.legacy(1, "tools/list");
  const Json result = desk.last().at("result");

  EXPECT_FALSE(result.contains("resultType"));
  EXPECT_FALSE(result.contains("ttlMs"));
  EXPECT_FALSE(result.contains("_meta"));
}

TEST(ACursor, OfAnotherListIsRefused) {
  for (const Json &cursor :
       {Json("from-1000"), Json("from-"), Json("x"), Json(1), Json("from-0x")}) {
    Desk desk;
    desk.handshake();
    desk.legacy(1, "tools/list", {{"cursor", cursor}});

    EXPECT_EQ(desk.lastError(), InvalidParams) << cursor;
  }
}

TEST(ALongList, ComesInPages) {
  Desk desk;
  desk.handshake();
  std::vector<DeclaredApplication> many;
  for (int number = 0; number < 250; ++number) {
    many.push_back({"org.example.app" + std::to_string(number), std::nullopt});
  }
  desk.server().replaceCatalogue(makeCatalogue(many, false));

  std::vector<std::string> names;
  Json params = Json::object();
  do {
    desk.legacy(1, "tools/list", params);
    const Json result = desk.last().at("result");
    for (const Json &tool : result.at("tools")) {
      names.push_back(tool.at("name").get<std::string>());
    }
    params = Json::object();
    if (result.contains("nextCursor")) {
      params["cursor"] = result.at("nextCursor");
    }
  } while (!params.empty());

  ASSERT_EQ(names.size(), 250U);
  EXPECT_EQ(names.front(), "app0_state");
  EXPECT_EQ(names.back(), "app249_state");
}

TEST(AnUnknownNotification, IsIgnored) {
  Desk desk;
  desk.handshake();
  desk.notify("notifications/whatever", {{"a", 1}});
  desk.notify("notifications/cancelled", {{"requestId", "unknown"}});
  desk.notify("notifications/cancelled", Json::object());

  EXPECT_TRUE(desk.last().is_null());
}

TEST(AnIdInUse, IsRefused) {
  Desk desk;
  desk.handshake();
  desk.legacy(1, "tools/call", {{"name", "player_play"}});
  desk.legacy(1, "ping");

  EXPECT_EQ(desk.lastError(), InvalidRequest);
}

TEST(AChangeOfTheTools, IsToldToALegacyClient) {
  Desk desk;
  desk.handshake();
  desk.server().replaceCatalogue(playerCatalogue());

  EXPECT_EQ(desk.last().at("method"), "notifications/prompts/list_changed");
}

TEST(AChangeOfTheTools, IsToldToAModernClientThatListensAndUnderItsId) {
  Desk desk;
  desk.modern("sub", "subscriptions/listen", {{"notifications", {{"toolsListChanged", true}}}});
  const Json acknowledged = desk.last();
  desk.server().replaceCatalogue(playerCatalogue());
  const Json told = desk.last();

  EXPECT_EQ(acknowledged.at("method"), "notifications/subscriptions/acknowledged");
  EXPECT_EQ(acknowledged.at("params").at("_meta").at(kSubscriptionKey), "sub");
  EXPECT_EQ(told.at("method"), "notifications/tools/list_changed");
  EXPECT_EQ(told.at("params").at("_meta").at(kSubscriptionKey), "sub");
}

TEST(AChangeOfTheTools, IsNotToldAfterTheSubscriptionWasCancelled) {
  Desk desk;
  desk.modern("sub", "subscriptions/listen", {{"notifications", {{"toolsListChanged", true}}}});
  desk.last();
  desk.cancel("sub");
  desk.server().replaceCatalogue(playerCatalogue());

  EXPECT_TRUE(desk.last().is_null());
}

} // namespace
