// SPDX-License-Identifier: Apache-2.0
//
// norix.hpp in a process of its own, with the real platform and main loop.
#include "assistant/actions/Declarations.h"
#include "integration/harness/IntegrationTest.h"

#include <norix.h>

#include <gmock/gmock.h>

#include <optional>

namespace integration {
namespace {

using norix::assistant::actionRequest;
using norix::assistant::Answer;
using norix::assistant::Session;
using norix::assistant::stateRequest;

constexpr const char *kId = "org.example.cpp";

class AnApplicationInCpp : public IntegrationTest {
protected:
  AnApplicationInCpp() {
    runtime.install(kId, "1.0-beta");
    process.emplace(std::vector<std::string>{CPP_APPLICATION},
                    Process::Environment{{"AUL_APPID", kId}});
    EXPECT_EQ(process->readLine(), "ready") << process->errors();
    session.emplace(kId);
  }
  ~AnApplicationInCpp() override {
    process->closeInput();
    EXPECT_EQ(process->wait(), 0) << process->errors();
  }

  std::string resultOf(const std::string &action, const std::string &params = "{}") {
    return session->ask(actionRequest(action, params), kBound).response.text();
  }

  std::optional<Process> process;
  std::optional<Session> session;
};

TEST_F(AnApplicationInCpp, AnswersForItsState) {
  EXPECT_EQ(session->ask(stateRequest(), kBound).response.text(), R"({"answered":0})");
}

TEST_F(AnApplicationInCpp, AnswersWithTheParametersOfARequest) {
  EXPECT_EQ(resultOf("echo", R"({"title":"Rain on Tin"})"), R"({"title":"Rain on Tin"})");
}

TEST_F(AnApplicationInCpp, SaysWhatIsWrongWithAParameter) {
  EXPECT_EQ(resultOf("volume", R"({"volume":40})"), "The volume is 40");
  EXPECT_EQ(resultOf("volume", R"({"volume":400})"),
            R"(Error: "volume" of volume has to be a whole number from 0 to 100, not 400)");
}

TEST_F(AnApplicationInCpp, SurvivesAnException) {
  EXPECT_EQ(resultOf("throw"), "throw failed");
  EXPECT_EQ(resultOf("echo", "again"), "again");
}

TEST_F(AnApplicationInCpp, AnswersForARequestThatItForgot) {
  EXPECT_EQ(resultOf("forget"), "Something went wrong");
}

TEST_F(AnApplicationInCpp, AnswersFromThreads) {
  constexpr int kRequests = 200;
  for (int i = 0; i < kRequests; ++i) {
    ASSERT_EQ(resultOf("thread"), "From a thread") << i;
  }

  EXPECT_EQ(session->ask(stateRequest(), kBound).response.text(), R"({"answered":200})");
}

TEST_F(AnApplicationInCpp, DropsTheAnswerToARequestThatWasReplaced) {
  session->client().send(actionRequest("keep", "{}"));

  EXPECT_EQ(resultOf("release"), "dropped");
}

TEST_F(AnApplicationInCpp, CanBeDrivenAgainAfterItMadeItsAssistantAnew) {
  session->client().send(actionRequest("restart", "{}"));
  session->awaitEnd(kBound);
  ASSERT_EQ(process->readLine(), "ready");

  session.emplace(kId);
  EXPECT_EQ(resultOf("echo", "again"), "again");
}

TEST_F(AnApplicationInCpp, SaysWhyItCannotBeMade) {
  const std::string other = "org.example.without";
  runtime.install(other, std::nullopt);

  Process refused({CPP_APPLICATION}, {{"AUL_APPID", other}});

  EXPECT_THAT(refused.readLine(), testing::HasSubstr(NORIX_SDK_VERSION_METADATA_KEY));
  EXPECT_EQ(refused.wait(), 0);
}

TEST(TheDeclarationsOfAnApplicationInCpp, AreWrittenByItsBuild) {
  const auto reading = norix::assistant::actions::read(CPP_DECLARATIONS);

  ASSERT_TRUE(reading.has_value());
  EXPECT_TRUE(reading->isUsable());
  EXPECT_THAT(reading->findings, testing::IsEmpty());
  const auto *volume = reading->declarations.find("volume");
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(volume->parameters.at("properties").at("volume").at("maximum"), 100);
}

} // namespace
} // namespace integration
