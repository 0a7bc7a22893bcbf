// SPDX-License-Identifier: Apache-2.0
//
// The file that says who may send requests.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"
#include "integration/harness/wire.h"
#include "support/RawSocket.h"

#include <chrono>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace integration {
namespace {

constexpr const char *kSender = "com.valtren.tizen.norix";

class AllowListTest : public IntegrationTest {
protected:
  TestApplication startWithList(const std::string &content) {
    return startReading(runtime.write("allow_list.dat", content));
  }

  TestApplication startReading(const std::string &path) {
    TestApplication::Options options;
    options.allowList = path;
    return TestApplication::initialised(runtime, options);
  }
};

class AnAllowListThatNamesTheSender : public AllowListTest,
                                      public testing::WithParamInterface<Named<std::string>> {};
class AnAllowListThatDoesNot : public AllowListTest,
                               public testing::WithParamInterface<Named<std::string>> {};
class AnAbsentAllowList : public AllowListTest {};
class AnAllowList : public AllowListTest {};

using List = Named<std::string>;
INSTANTIATE_TEST_SUITE_P(
    , AnAllowListThatNamesTheSender,
    testing::Values(List{"Alone", "com.valtren.tizen.norix\n"},
                    List{"WithoutTheLastNewline", "com.valtren.tizen.norix"},
                    List{"AmongOthers",
                         "com.example.a\n\ncom.valtren.tizen.norix\ncom.example.b\n"},
                    List{"Twice", "com.valtren.tizen.norix\ncom.valtren.tizen.norix\n"}));

INSTANTIATE_TEST_SUITE_P(, AnAllowListThatDoesNot,
                         testing::Values(List{"IsEmpty", ""}, List{"HoldsAnEmptyLineOnly", "\n"},
                                         List{"NamesAnother", "com.example.a\n"},
                                         List{"EndsItsLinesAsOnWindows",
                                              "com.valtren.tizen.norix\r\n"},
                                         List{"PadsTheId", " com.valtren.tizen.norix\n"},
                                         List{"NamesItInCapitals", "COM.VALTREN.TIZEN.NORIX\n"},
                                         List{"NamesALongerOne", "com.valtren.tizen.norix2\n"}));

TEST_P(AnAllowListThatNamesTheSender, LetsItBeServed) {
  const TestApplication application = startWithList(GetParam().value);

  Session session(application.id());

  EXPECT_TRUE(session.ask(stateRequest(), kBound).response.isState());
}

TEST_P(AnAllowListThatDoesNot, RefusesTheSendersDelegate) {
  const TestApplication application = startWithList(GetParam().value);
  Session session = Session::connected(application.id());

  EXPECT_EQ(failureOf([&] { session.client().setCallback({}); }), Failure::Refused);
  EXPECT_EQ(failureOf([&] { session.client().unsetCallback(); }), Failure::Refused);
}

TEST_P(AnAllowListThatDoesNot, DropsTheSendersRequests) {
  TestApplication application = startWithList(GetParam().value);
  Session session = Session::connected(application.id());
  application.reportLog("source app is not allowed to send app sdk requests");

  session.client().send(stateRequest());

  EXPECT_NO_THROW(application.awaitLog());
}

TEST_F(AnAbsentAllowList, LetsEverybodyBeServed) {
  const TestApplication application = startReading(runtime.write("other.dat", "") / "absent");
  runtime.sendAs("com.example.anybody");

  Session session(application.id());

  EXPECT_TRUE(session.ask(stateRequest(), kBound).response.isState());
}

TEST_F(AnAllowList, IsReadAgainForEachConnection) {
  const TestApplication application = startWithList("com.example.a\n");
  Session before = Session::connected(application.id());
  EXPECT_EQ(failureOf([&] { before.client().setCallback({}); }), Failure::Refused);

  runtime.write("allow_list.dat", std::string(kSender) + "\n");
  Session after = Session::connected(application.id());

  EXPECT_EQ(failureOf([&] { after.client().setCallback({}); }), std::nullopt);
  EXPECT_EQ(failureOf([&] { before.client().setCallback({}); }), Failure::Refused);
}

class AnAllowListUnderALackOfDescriptors : public AllowListTest {
protected:
  static constexpr rlim_t kDescriptors = 64;
  static constexpr long kReserve = 8; // What ports leave to the application.

  /// Starts the application with so few descriptors that a crowd of peers can use them up.
  TestApplication startWithFewDescriptors(const std::string &content) {
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few = {kDescriptors, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    TestApplication application = startWithList(content);
    setrlimit(RLIMIT_NOFILE, &before);
    return application;
  }

  /// Connects until the application accepts no more.
  void crowdIn(TestApplication &application) {
    for (int i = 0; i < 100; ++i) {
      _crowd.push_back(support::RawSocket::connectTo(socketPath(application.id())));
      ASSERT_NE(_crowd.back(), nullptr);
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (application.process().openFiles() < static_cast<long>(kDescriptors) - kReserve
           && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
  }

private:
  std::vector<std::unique_ptr<support::RawSocket>> _crowd;
};

TEST_F(AnAllowListUnderALackOfDescriptors, StillRefusesTheSender) {
  TestApplication application = startWithFewDescriptors("com.example.a\n");
  Session session = Session::connected(application.id());

  crowdIn(application);

  EXPECT_EQ(failureOf([&] { session.client().setCallback({}); }), Failure::Refused);
}

} // namespace
} // namespace integration
